// The list of objects.
#pragma once

#include <vorlund/ClassIds.h>
#include <vorlund/ObjectEnumerator.h>
#include <vorlund/ObjectImpl.h>
#include <vorlund/ObjectList.h>
#include <vorlund/RefPtr.h>

#include <cstddef>
#include <exception>
#include <vector>

namespace vorlund {

/// Holds one reference per position; a failed call leaves it unchanged.
///
/// Each of a member's operations may come back to the list: change it, in the midst of what it does, or
/// release it. So the list holds a reference to itself while it works, walks by index, and gives each
/// reference back once: a member whose release has begun is still there to be found, marked, until it is
/// removed.
class CObjectList : public CObjectImpl<IObjectList> {
public:
    static constexpr CId ClassId = classid::CObjectList;

    void AddObject(IObject* object) override;
    void RemoveObject(unsigned int index) override;
    void RemoveObject(IObject* object) override;
    void RemoveAllObjects() override;
    IObjectEnumerator* EnumerateObjects() override;
    IObjectEnumerator* EnumerateObjects(CId interfaceId) override;
    unsigned int GetObjectCount() override;
    IObject* GetObject(unsigned int index) override;
    int FindObject(IObject* object) override;

protected:
    CObjectList() = default;
    ~CObjectList() noexcept(false);

private:
    struct TMember {
        /// Null once a member has been released while its position waits for the list to be emptied.
        IObject* object;
        bool isReleased;
    };

    /// The first position of `object`. Raises `failure` when there is none.
    std::size_t Find(IObject* object, const struct TFailure& failure) const;
    /// A position at which `object` is marked, where it is `likely` or else the first; or the count.
    std::size_t ReleasedPosition(IObject* object, std::size_t likely) const;
    bool IsAt(std::size_t index, IObject* object) const;
    void ReleaseAndRemove(std::size_t index);
    /// The members that have the interface, all without one.
    IObjectEnumerator* Enumerate(const CId* interfaceId);
    /// Releases every member and empties the list; gives the first exception that a release raised.
    std::exception_ptr ReleaseAll();
    /// Empties the list and releases who was in it; `first` is the first exception of a release, if none was.
    void TakeOut(std::exception_ptr& first);

    std::vector<TMember> members_;
    /// Set while the list is destroyed: it takes no more members then.
    bool isEnding_ = false;
};

} // namespace vorlund
