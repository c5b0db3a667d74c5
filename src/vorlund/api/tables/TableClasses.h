// The classes that tables of plug-ins bring to the stores of `v`.
//
// The class store makes objects by functions without arguments, and a table has no such function for each of
// its classes. So there is a fixed number of places, each with a function of its own that makes what is in
// it. A place is taken for good: the class store keeps the function until the library is closed. It is used
// again only for the class for which it was taken, when its plug-in is loaded another time.
#pragma once

#include "vorlund/api/tables/TableText.h"

#include <vorlund/Id.h>
#include <vorlund/PluginTable.h>

#include <atomic>
#include <memory>
#include <vector>

namespace vorlund {
class IObject;
}

namespace vorlund::tables {

/// Whether a plug-in may still be called. Objects of its classes share it.
struct TLife {
    std::atomic<bool> isOpen = true;
};

/// What the library keeps of a class; never changes.
struct TTableClass {
    CId id;
    wstring name;
    /// One of these is not null: the record in the plug-in. What is used of it is the copy.
    const vorlund_plugin_decoder* decoderRecord = nullptr;
    const vorlund_plugin_device* deviceRecord = nullptr;
    vorlund_plugin_decoder decoder = {};
    vorlund_plugin_device device = {};
    std::shared_ptr<TLife> life = {};
};
using TClassPtr = std::shared_ptr<const TTableClass>;

/// A table that was found good.
struct TCheckedTable {
    std::vector<TTableClass> classes;
    /// Why it is not; empty when it is.
    wstring refusal;
};

constexpr CId ToId(const vorlund_plugin_id& id) {
    return {id.words[0], id.words[1], id.words[2], id.words[3]};
}

/// Looks at a table and at the records that it names. Raises `std::bad_alloc`.
TCheckedTable Check(const vorlund_plugin_table& table);

/// Registers the classes of a table with the stores of `v`, in its order. Null, with the reason in `refusal`,
/// when the table is not good or there is no place for its classes; then nothing is registered. Raises what
/// the stores raise; what is registered then yields no objects.
std::shared_ptr<TLife> Open(const vorlund_plugin_table& table, wstring& refusal);

/// New objects of a class.
IObject* NewDecoder(const TClassPtr& tableClass);
IObject* NewDevice(const TClassPtr& tableClass);

} // namespace vorlund::tables
