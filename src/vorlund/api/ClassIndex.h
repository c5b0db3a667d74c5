// Finds classes by identifier and by name without walking the registrations.
#pragma once

#include <vorlund/ClassStore.h>

#include <string_view>
#include <unordered_map>

namespace vorlund {

/// The first registration of every identifier and of every name. Later ones are not entered, so a lookup
/// gives what a scan from the front would give.
class CClassIndex {
public:
    /// Enters `info`, which must outlive the index. Raises `std::bad_alloc` with the index as it was.
    void Add(const TClassInfo& info) {
        const auto [entry, isFirst] = byId_.try_emplace(info.id, &info);
        try {
            if (info.name) byName_.try_emplace(TName(info.name), &info);
        } catch (...) {
            if (isFirst) byId_.erase(entry);
            throw;
        }
    }

    /// The first registration, or null.
    const TClassInfo* Find(const CId& id) const { return Find(byId_, id); }
    const TClassInfo* Find(const wchar* name) const { return name ? Find(byName_, TName(name)) : nullptr; }

    void Clear() {
        byId_.clear();
        byName_.clear();
    }

private:
    using TName = std::basic_string_view<wchar>;

    /// Identifiers are random numbers, so a mix of their words spreads them well.
    struct TIdHash {
        std::size_t operator()(const CId& id) const {
            return id.GetWord(0) ^ id.GetWord(1) * 3u ^ id.GetWord(2) * 5u ^ id.GetWord(3) * 7u;
        }
    };

    template <class TMap, class TKey> static const TClassInfo* Find(const TMap& map, const TKey& key) {
        const auto found = map.find(key);
        return found == map.end() ? nullptr : found->second;
    }

    std::unordered_map<CId, const TClassInfo*, TIdHash> byId_;
    std::unordered_map<TName, const TClassInfo*> byName_;
};

} // namespace vorlund
