// What makes a variant of the program load refuse_allocations_win32.cpp.
extern "C" __declspec(dllimport) const int refusesAllocations;

extern const int* const refusal;
const int* const refusal = &refusesAllocations;
