/// \file
/// `IObjectList`, a list of objects. One thread at a time. The enumerators and wrappers that usually come
/// with it are included.
#pragma once

#include <vorlund/Object.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/PtrObject.h>
#include <vorlund/StringObject.h>

#include <concepts>

#include <vorlund/NamesBegin.h>

namespace vorlund {

/// An ordered list that holds one reference to each member; an object may be in it several times.
///
/// \code{.cpp}
/// const auto names = CreateAs<IObjectList>(classid::CObjectList);
/// for (const wchar* name : {VRL_L("one"), VRL_L("two")}) {
///     const auto text = CreateAs<IStringObject>(classid::CStringObject);
///     text->SetString(name);
///     names->AddObject(text.Get());
/// }
/// for (const auto& text : Each<IStringObject>(names->EnumerateObjects()))
///     std::printf("%s\n", ToUtf8(text->GetString()).c_str());
/// // prints one
/// // prints two
/// \endcode
class IObjectList : public IObject {
public:
    using TBase = IObject;
    static constexpr CId InterfaceId{0xD1768FC0, 0x42BB48E7, 0x87E11D7D, 0x6AFB9D1E};

    /// Appends `object`, which must not be null, and adds a reference. Raises `std::bad_alloc`, with the list
    /// as it was.
    virtual void AddObject(IObject* object) = 0;

    /// Removes and releases the member at `index`. Raises `CBadIndexException` "Index out of bounds".
    virtual void RemoveObject(unsigned int index) = 0;

    /// Removes and releases the first occurrence of `object`. Raises `CObjectNotFoundException` "Cannot find
    /// object".
    virtual void RemoveObject(IObject* object) = 0;

    /// `RemoveObject(unsigned int)`, for literal numbers. Since version 0.1.
    template <std::same_as<int> TIndex> void RemoveObject(TIndex index) {
        RemoveObject(static_cast<unsigned int>(index));
    }

    /// Releases every member in order and empties the list.
    virtual void RemoveAllObjects() = 0;

    /// A new enumerator over a snapshot of the members, owned by the caller. Raises what the class store
    /// raises.
    virtual IObjectEnumerator* EnumerateObjects() = 0;

    /// The same over those members that answer `QueryInterface(interfaceId)`.
    virtual IObjectEnumerator* EnumerateObjects(CId interfaceId) = 0;

    /// The number of members.
    virtual unsigned int GetObjectCount() = 0;

    /// The member at `index`, with one reference for the caller. Raises `CBadIndexException` "Index out of
    /// bounds".
    virtual IObject* GetObject(unsigned int index) = 0;
    /// `GetObject` under the names that it has after `<windows.h>` (see NamesBegin.h).
    IObject* GetObjectA(unsigned int index) { return GetObject(index); }
    IObject* GetObjectW(unsigned int index) { return GetObject(index); }

    /// The position of the first occurrence of `object`. Raises `CObjectNotFoundException` "Cannot find
    /// object".
    virtual int FindObject(IObject* object) = 0;

protected:
    ~IObjectList() = default;
};

} // namespace vorlund

#include <vorlund/NamesEnd.h>
