#include "vorlund/api/tables/TableClasses.h"

#include <vorlund/CodecClassStore.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/ObjectServices.h>

#include <array>
#include <cstddef>
#include <mutex>
#include <utility>

namespace vorlund::tables {
namespace {

/// Four times as many as a table may have of a kind.
constexpr std::size_t kPlaces = 256;

/// What is in the places. A class is exchanged for the same one of another load, whose name has the same
/// units: the class store keeps a pointer to those of the first, so each stays in `names`.
class CPlaces {
public:
    /// Puts a class into a place; `kPlaces` when all are taken. `name` is the text for the class store.
    std::size_t Take(const TClassPtr& tableClass, const wchar*& name) {
        const std::lock_guard guard(mutex_);
        std::size_t place = 0;
        while (place < kPlaces && classes_[place] && !IsSame(*classes_[place], *tableClass)) ++place;
        if (place == kPlaces) return place;
        if (!classes_[place]) names_[place] = tableClass->name;
        classes_[place] = tableClass;
        name = names_[place].c_str();
        return place;
    }

    TClassPtr Get(std::size_t place) {
        const std::lock_guard guard(mutex_);
        return classes_[place];
    }

private:
    /// Whether the former is gone and the latter the same class once more.
    static bool IsSame(const TTableClass& former, const TTableClass& next) {
        return !former.life->isOpen && former.id == next.id && former.name == next.name &&
               !former.decoderRecord == !next.decoderRecord;
    }

    std::mutex mutex_;
    std::array<TClassPtr, kPlaces> classes_;
    std::array<wstring, kPlaces> names_;
};

CPlaces places;

template <std::size_t kPlace> IObject* New() {
    const TClassPtr tableClass = places.Get(kPlace);
    if (!tableClass->life->isOpen) return nullptr;
    return tableClass->decoderRecord ? NewDecoder(tableClass) : NewDevice(tableClass);
}

template <std::size_t... kPlace>
constexpr std::array<IObject* (*)(), kPlaces> MakeFactories(std::index_sequence<kPlace...>) {
    return {&New<kPlace>...};
}
constexpr auto kFactories = MakeFactories(std::make_index_sequence<kPlaces>());

void Register(const TTableClass& tableClass, const wchar* name, std::size_t place) {
    services::RegisterFactory(tableClass.id, name, kFactories[place]);
    if (tableClass.decoderRecord) {
        services::CodecClassStore().RegisterDecoder(
            {tableClass.id, ToId(tableClass.decoder.source_format), ToId(tableClass.decoder.result_format)});
    } else if (tableClass.device.kind == VORLUND_PLUGIN_AUDIO_OUTPUT) {
        // Applications open what the store of devices makes for playing.
        services::DeviceClassStore().RegisterDevice({tableClass.id, DEVICE_TYPE_AUDIO});
    }
}

} // namespace

std::shared_ptr<TLife> Open(const vorlund_plugin_table& table, wstring& refusal) {
    TCheckedTable checked = Check(table);
    refusal = checked.refusal;
    if (!refusal.empty()) return nullptr;
    struct TTaken {
        TClassPtr tableClass;
        const wchar* name;
        std::size_t place;
    };
    std::vector<TTaken> taken;
    auto life = std::make_shared<TLife>();
    try {
        for (TTableClass& found : checked.classes) {
            found.life = life;
            taken.push_back({std::make_shared<TTableClass>(std::move(found)), nullptr, 0});
            TTaken& last = taken.back();
            last.place = places.Take(last.tableClass, last.name);
            if (last.place < kPlaces) continue;
            refusal = VRL_L("there is no place for more classes of tables");
            life->isOpen = false;
            return nullptr;
        }
        for (const TTaken& item : taken) Register(*item.tableClass, item.name, item.place);
    } catch (...) {
        life->isOpen = false;
        throw;
    }
    return life;
}

} // namespace vorlund::tables
