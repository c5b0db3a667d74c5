// The places for the classes of tables, of which there are 256, and tables for which memory ends.
#include "vorlund/api/tables/TableClasses.h"

#include "support/LibraryScope.h"
#include "support/RefuseEachAllocation.h"
#include "support/Streams.h"
#include "support/Text.h"

#include <vorlund/AudioOutput.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vorlund::test {
namespace {

constexpr std::uint32_t kId = 0x7AB1E100;

std::int32_t VORLUND_PLUGIN_CALL OpenNothing(const vorlund_plugin_decoder*, const vorlund_plugin_input*,
                                             vorlund_plugin_opened*) {
    return VORLUND_PLUGIN_OTHER_DATA;
}
std::int32_t VORLUND_PLUGIN_CALL ReadNothing(void*, void*, std::uint32_t, std::uint32_t*) {
    return VORLUND_PLUGIN_FAILED;
}
void VORLUND_PLUGIN_CALL CloseNothing(void*) {}
std::int32_t VORLUND_PLUGIN_CALL RefuseDevice(const vorlund_plugin_device*,
                                              const vorlund_plugin_client* client,
                                              vorlund_plugin_port_format*, void**) {
    client->explain(client, "It is somebody else's, as long as this sentence is");
    return VORLUND_PLUGIN_FAILED;
}
std::int32_t VORLUND_PLUGIN_CALL StartNothing(void*) {
    return VORLUND_PLUGIN_OK;
}

/// A table of decoders, or of outputs, with identifiers and names of their own.
class CTable {
public:
    CTable(std::uint32_t first, std::uint32_t count, const char* name = "test::CPlaced",
           bool isDevice = false)
        : decoders_(isDevice ? 0 : count), devices_(isDevice ? count : 0) {
        std::uint32_t id = first;
        for (vorlund_plugin_decoder& decoder : decoders_) {
            decoder = {sizeof decoder,
                       8,
                       {{kId, 0, 0, ++id}},
                       name,
                       {},
                       VORLUND_PLUGIN_AUDIO_ID,
                       nullptr,
                       &OpenNothing,
                       &ReadNothing,
                       nullptr,
                       &CloseNothing};
            decoderList_.push_back(&decoder);
        }
        for (vorlund_plugin_device& device : devices_) {
            device = {sizeof device,
                      VORLUND_PLUGIN_AUDIO_OUTPUT,
                      {{kId, 0, 0, ++id}},
                      name,
                      0,
                      0,
                      &RefuseDevice,
                      &StartNothing,
                      &CloseNothing,
                      &CloseNothing,
                      nullptr};
            deviceList_.push_back(&device);
        }
        table_ = {sizeof table_,
                  VORLUND_PLUGIN_TABLE_VERSION,
                  static_cast<std::uint32_t>(decoderList_.size()),
                  static_cast<std::uint32_t>(deviceList_.size()),
                  decoderList_.data(),
                  deviceList_.data()};
    }
    CTable(const CTable&) = delete;
    CTable& operator=(const CTable&) = delete;

    /// Why it is not opened; empty when it is. `life` is that of its classes.
    std::string Open() {
        wstring refusal;
        life = tables::Open(table_, refusal);
        return Narrow(refusal);
    }
    CRefPtr<IObject> Create(std::uint32_t number) const {
        return CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(CId(kId, 0, 0, number)));
    }

    std::shared_ptr<tables::TLife> life;

private:
    std::vector<vorlund_plugin_decoder> decoders_;
    std::vector<vorlund_plugin_device> devices_;
    std::vector<const vorlund_plugin_decoder*> decoderList_;
    std::vector<const vorlund_plugin_device*> deviceList_;
    vorlund_plugin_table table_;
};

TEST(TablePlaces, MemoryThatEndsLeavesNoObjectsBehind) {
    const CLibraryScope library;
    CTable table(1000, 2);
    RefuseEachAllocation([&] { table.Open(); },
                         [&] {
                             if (table.life) table.life->isOpen = false;
                         },
                         TKept::Room);
    table.life->isOpen = false;
    EXPECT_FALSE(table.Create(1001));
}

TEST(TablePlaces, MemoryThatEndsForTheReasonOfADevice) {
    const CLibraryScope library;
    CTable table(1010, 1, "test::COutput", true);
    ASSERT_EQ(table.Open(), "");
    const auto output = table.Create(1011).Query<IAudioOutput>();
    ASSERT_TRUE(output);
    RefuseEachAllocation(
        [&] {
            try {
                output->OpenOutput({SAMPLE_FORMAT_16BIT, 2, 48000}, 0.1);
            } catch (const CFailedException&) {
            }
        },
        [](TRefusal refusal) { EXPECT_NE(refusal, TRefusal::Foreign); }, TKept::Room);
    table.life->isOpen = false;
}

TEST(TablePlaces, AreUsedAgainForTheSameClassAlone) {
    const CLibraryScope library;
    // The same, the same while the former lives, one of another name, and one of another kind.
    CTable first(1020, 1);
    ASSERT_EQ(first.Open(), "");
    first.life->isOpen = false;
    CTable again(1020, 1);
    ASSERT_EQ(again.Open(), "");
    EXPECT_TRUE(again.Create(1021).Query<IInputStreamFilter>());
    again.life->isOpen = false;
    CTable renamed(1020, 1, "test::CRenamed");
    ASSERT_EQ(renamed.Open(), "");
    renamed.life->isOpen = false;
    CTable device(1020, 1, "test::CRenamed", true);
    ASSERT_EQ(device.Open(), "");
    // The class store has the first of them, which is closed.
    EXPECT_FALSE(device.Create(1021));
    device.life->isOpen = false;
}

TEST(TablePlaces, WithoutAPlaceATableIsRefused) {
    const CLibraryScope library;
    std::string refusal;
    std::uint32_t opened = 0;
    std::vector<std::unique_ptr<CTable>> tables;
    while (refusal.empty() && opened <= 256) {
        tables.push_back(std::make_unique<CTable>(opened, 32));
        refusal = tables.back()->Open();
        if (refusal.empty()) opened += 32;
    }
    // Other tests of this process have places too.
    EXPECT_EQ(refusal, "there is no place for more classes of tables");
    EXPECT_GE(opened, 192u);
    EXPECT_TRUE(tables.front()->Create(1));
    // When they were closed, the same ones have their places still.
    for (const auto& table : tables)
        if (table->life) table->life->isOpen = false;
    EXPECT_EQ(CTable(0, 32).Open(), "");
}

} // namespace
} // namespace vorlund::test
