/// \file
/// Puts aside the macros of `<windows.h>` that have the name of a method of the library. NamesEnd.h brings
/// them back as they were.
///
/// `<windows.h>` makes macros of function names: after it, `GetObject` reads `GetObjectA` or `GetObjectW`.
/// Calls need nothing: the classes have methods of those names too, and `list->GetObject(0)` compiles
/// wherever `<windows.h>` is included, before, after or between the headers of the library. Who overrides
/// such a method in a file that includes `<windows.h>` brackets the class, and the definitions of its
/// methods, by the two headers:
///
///     #include <vorlund/NamesBegin.h>
///     class CMyList : public vorlund::CObjectImpl<vorlund::IObjectList> {
///         vorlund::IObject* GetObject(unsigned int index) override;
///         ...
///     };
///     #include <vorlund/NamesEnd.h>
///
/// Without the brackets, `override` makes the compiler refuse the class. The brackets may be nested, and
/// other headers may be included between them, but not `<windows.h>`. Neither header has an include guard.
/// This is the list of the names; the headers of the library bracket their own declarations by it. Where the
/// macros do not exist, nothing happens.
///
/// The implementation layers (ObjectImpl.h, StreamImpl.h, StreamFilterImpl.h) have no method of such a name:
/// a class derived from them needs brackets only when it declares one itself.

// tests/abi/check_names.py compares the list with the macros of <windows.h> and with NamesEnd.h.
#pragma push_macro("GetClassInfo")
#undef GetClassInfo
#pragma push_macro("GetObject")
#undef GetObject
