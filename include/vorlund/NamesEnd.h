/// \file
/// Brings back the macros that NamesBegin.h has put aside.

#pragma pop_macro("GetObject")
#pragma pop_macro("GetClassInfo")
