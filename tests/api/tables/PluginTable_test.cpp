// Plug-ins with a table of plain C: what the look at a table refuses, and decoders and devices that behave
// badly.
#include <vorlund/PluginTable.h>

#include "api/tables/TablePluginTest.h"

#include <vorlund/AudioInput.h>
#include <vorlund/AudioOutput.h>
#include <vorlund/DecodeReport.h>
#include <vorlund/DeviceClassStore.h>
#include <vorlund/PluginInfo.h>
#include <vorlund/PluginStore.h>
#include <vorlund/StreamFilter.h>
#include <vorlund/Vorlund.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <new>
#include <string>
#include <utility>

namespace vorlund::test {
namespace {

static_assert(sizeof(vorlund_plugin_info) == sizeof(TPluginInfoRecord) &&
              offsetof(vorlund_plugin_info, name) == offsetof(TPluginInfoRecord, name));

/// Raises in its reads, once there were `calls` others.
class CTableRaisingStream : public CMemoryInputStream {
public:
    static constexpr CId ClassId{0x1D7E5713, 0xA15D1C0A, 0x960B8F3E, 0x7AB1E010};

    int calls = 0;

    using CMemoryInputStream::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (calls-- <= 0) Raise<CTimeoutException>(streamfailures::kCannotRead);
        return CMemoryInputStream::Read(buffer, size);
    }
};

/// Does something once inside of one of its reads, the one after `calls` others.
class CTableActingStream : public CMemoryInputStream {
public:
    static constexpr CId ClassId{0x1D7E5713, 0xA15D1C0A, 0x960B8F3E, 0x7AB1E011};

    int calls = 0;
    std::function<void()> act;

    using CMemoryInputStream::Read;
    std::uint64_t Read(void* buffer, std::uint64_t size) override {
        if (calls-- == 0) {
            if (const auto once = std::exchange(act, nullptr)) once();
        }
        return CMemoryInputStream::Read(buffer, size);
    }
};

using PluginTable = CTablePluginTest;

TEST_F(PluginTable, GoodOneRegistersItsClassesAndTellsWhatItIs) {
    const TPluginReport report = Load(0);
    EXPECT_EQ(Narrow(report.Explain()), "loaded");
    EXPECT_EQ(Narrow(report.name), "table-plugin");
    EXPECT_EQ(Narrow(report.version), "0.9");
    EXPECT_EQ(Narrow(report.licence), "MIT");
    EXPECT_EQ(report.libraryVersion, 0);
    const struct {
        TPluginItemKind kind;
        CId id;
        const char* name;
    } rows[] = {
        {PLUGIN_ITEM_CLASS, kTableDecoder, "table::CDecoder"},
        {PLUGIN_ITEM_DECODER, kTableDecoder, "table::CDecoder"},
        {PLUGIN_ITEM_CLASS, kTableForward, "table::CForward"},
        {PLUGIN_ITEM_DECODER, kTableForward, "table::CForward"},
        {PLUGIN_ITEM_CLASS, kTableOutput, "table::COutput"},
        {PLUGIN_ITEM_DEVICE, kTableOutput, "table::COutput"},
        {PLUGIN_ITEM_CLASS, kTableInput, "table::CInput"},
    };
    ASSERT_EQ(report.items.size(), std::size(rows));
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(report.items[i].kind, rows[i].kind) << i;
        EXPECT_TRUE(report.items[i].classId == rows[i].id) << i;
        EXPECT_EQ(Narrow(report.items[i].name), rows[i].name);
    }
    const auto object = CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(VRL_L("table::CDecoder")));
    EXPECT_TRUE(object->GetClassId() == kTableDecoder);
    EXPECT_TRUE(object.Query<IInputStreamFilter>());
}

TEST_F(PluginTable, BadOnesAreRefusedWithTheReason) {
    const std::string table = std::to_string(sizeof(vorlund_plugin_table));
    const std::string decoder = std::to_string(sizeof(vorlund_plugin_decoder));
    const std::string device = std::to_string(sizeof(vorlund_plugin_device));
    const struct {
        int number;
        std::string reason;
    } rows[] = {
        {1, "its size is 4, and not " + table},
        {2, "its size is 4294967295, and not " + table},
        {3, "its version is 9, and not 1"},
        {4, "it has 65 decoders and 2 devices, more than 64"},
        {5, "it has 2 decoders and 4294967295 devices, more than 64"},
        {6, "it has no list of decoders"},
        {7, "it has no list of devices"},
        {8, "decoder 1: there is no record"},
        {9, "decoder 0: its size is 12, and not " + decoder},
        {10, "decoder 0: its size is 65537, and not " + decoder},
        {11, "decoder 0: it has no function 'open'"},
        {12, "decoder 0: it has no function 'read'"},
        {13, "decoder 0: it has no function 'close'"},
        {14, "decoder 0: its class has no name"},
        {15, "decoder 0: the name of its class is empty or too long"},
        {16, "decoder 0: the name of its class is empty or too long"},
        {17, "decoder 0: its class has no identifier"},
        {18, "decoder 1: its class has the identifier of another one"},
        {19, "decoder 0: it has no result format"},
        {20, "decoder 0: its instances have 2147483647 bytes"},
        {21, "device 0: its kind is 3"},
        {22, "device 0: it has no function 'open'"},
        {23, "device 0: it has no function 'start'"},
        {24, "device 0: it has no function 'stop'"},
        {25, "device 0: it has no function 'close'"},
        {26, "device 1: its size is 0, and not " + device},
        {27, "device 1: its class has the identifier of another one"},
        {35, "device 1: there is no record"},
        {36, "device 1: its class has no identifier"},
    };
    for (const auto& row : rows) {
        const TPluginReport report = Load(row.number, "bad" + std::to_string(row.number));
        EXPECT_EQ(report.outcome, PLUGIN_BAD_TABLE) << row.number;
        EXPECT_EQ(Narrow(report.Explain()), "its table cannot be used: " + row.reason);
        EXPECT_TRUE(report.items.empty());
        EXPECT_FALSE(IsInProcess(folder_.PathOf("bad" + std::to_string(row.number))));
    }
    EXPECT_THROW(v.GetClassStore().CreateObject(kTableDecoder), CClassNotFoundException);
}

TEST_F(PluginTable, WithABadTableNothingOfItStays) {
    store_.SetFailureMode(PLUGIN_FAILURE_REPORTED);
    EXPECT_EQ(Load(3).outcome, PLUGIN_BAD_TABLE);
    EXPECT_FALSE(IsInProcess(folder_.PathOf("table")));
}

TEST_F(PluginTable, TableWithoutTheEntriesIsRefused) {
    std::string bytes = ReadFile(PluginFile("table_plugin"));
    for (std::size_t at = 0; (at = bytes.find("?Vrl", at)) != std::string::npos;) bytes[at + 1] = 'X';
    WriteFile(folder_.PathOf("alone"), bytes);
    store_.LoadPluginFile(ToVorlund(folder_.PathOf("alone")).c_str());
    const TPluginReport report = store_.GetReport(0);
    EXPECT_EQ(report.outcome, PLUGIN_NO_ENTRY);
    EXPECT_EQ(Narrow(report.Explain()), "an entry is missing: it has a table, but neither "
                                        "?VrlInitPlugin@@YA_NXZ nor ?VrlClosePlugin@@YAXXZ");
}

TEST_F(PluginTable, ScanSeesIt) {
    store_.SetScanMode(PLUGIN_SCAN_CHILD);
    EXPECT_EQ(Narrow(Load(0, "good").Explain()), "loaded");
    EXPECT_EQ(Narrow(Load(3, "bad").Explain()), "its table cannot be used: its version is 9, and not 1");
}

TEST_F(PluginTable, DecoderReadsAndSeeks) {
    Load(0);
    const auto decoded = Decode("Tg");
    ASSERT_TRUE(decoded);
    EXPECT_TRUE(decoded->GetClassId() == kTableDecoder);
    EXPECT_EQ(decoded->GetCapabilities(), 7U);
    EXPECT_EQ(decoded->GetLength(), 1000);
    const auto& format = static_cast<const TDataFormat_AudioPcm&>(decoded->GetFormat());
    EXPECT_EQ(format.samplesPerSec, 8000U);
    TBytes bytes(2000);
    EXPECT_EQ(decoded->Read(bytes.data(), bytes.size()), 1000U);
    bytes.resize(1000);
    EXPECT_EQ(bytes, Ramp(1000));
    EXPECT_TRUE(decoded->Eof());
    EXPECT_EQ(decoded->Read(bytes.data(), 1), 0U);
    decoded->Seek(2000);
    EXPECT_EQ(decoded->Tell(), 1000);
    decoded->Seek(7);
    decoded->Skip(3);
    EXPECT_EQ(decoded->Tell(), 10);
    EXPECT_FALSE(decoded->Eof());
    EXPECT_EQ(decoded->Read(bytes.data(), 4), 4U);
    EXPECT_EQ(bytes[0], 10);
    EXPECT_THROW(decoded->Seek(-1), CIOException);
    EXPECT_THROW(decoded->Read(nullptr, 1), CNullPtrException);
}

TEST_F(PluginTable, RefusalsHaveTheReasonOfThePlugin) {
    Load(0);
    const struct {
        const char* bytes;
        const char* reason;
        TDecodeOutcome outcome;
    } rows[] = {
        {"Xx", "Data are of another kind", DECODE_REFUSED},
        {"Td",
         "Not \xE2\x82\xAC"
         "5?[2J",
         DECODE_REFUSED},
        {"Tu", "Input cannot be read", DECODE_UNREADABLE},
        {"Tx", "Decoder failed", DECODE_REFUSED},
        {"Tc", "Decoder made an impossible format", DECODE_REFUSED},
        {"Th", "Decoder made an impossible format", DECODE_REFUSED},
        {"Ti", "Decoder made another format than it is registered for", DECODE_REFUSED},
    };
    for (const auto& row : rows) {
        EXPECT_THROW(Decode(row.bytes), CDataFormatException) << row.bytes;
        const auto& entries = report_.GetEntries();
        const auto found = std::find_if(entries.begin(), entries.end(), [](const TDecodeEntry& entry) {
            return entry.classId == kTableDecoder;
        });
        ASSERT_NE(found, entries.end()) << row.bytes;
        EXPECT_EQ(Narrow(found->reason), row.reason);
        EXPECT_EQ(found->outcome, row.outcome) << row.bytes;
        EXPECT_EQ(Narrow(found->className), "table::CDecoder");
        EXPECT_EQ(Narrow(found->values), row.bytes[1] == 'd' ? "depth -5" : "");
        EXPECT_EQ(Narrow(found->remarks), row.bytes[1] == 'd' ? "a remark" : "");
    }
    EXPECT_THROW(Decode("Tm"), std::bad_alloc);
    EXPECT_TRUE(Decode("Tn"));
}

TEST_F(PluginTable, ReadsThatLieAreCutAndFailuresAreRaised) {
    Load(0);
    TBytes bytes(64);
    EXPECT_EQ(Decode("Tr")->Read(bytes.data(), 64), 64U);
    const auto failing = Decode("Tf");
    try {
        failing->Read(bytes.data(), 64);
        ADD_FAILURE();
    } catch (const CIOException& failure) {
        EXPECT_EQ(Narrow(failure.GetReason()), "Frame 3 is broken");
    }
    EXPECT_EQ(failing->Tell(), 0);
    EXPECT_THROW(Decode("To")->Read(bytes.data(), 64), std::bad_alloc);
}

TEST_F(PluginTable, WhatTheStreamRaisesGoesOnBehindThePlugin) {
    Load(0);
    const auto stream = Make<CTableRaisingStream>();
    stream->bytes = {'T', 's', 1, 2};
    stream->calls = 1000;
    const auto decoded = Decode(stream.Get());
    stream->calls = 0;
    std::uint8_t byte = 0;
    EXPECT_THROW(decoded->Read(&byte, 1), CTimeoutException);
    stream->calls = 1000;
    EXPECT_EQ(decoded->Read(&byte, 1), 1U);
    EXPECT_EQ(byte, 1);
    stream->calls = 0;
    const auto filter = CRefPtr<IInputStreamFilter>::Adopt(
        static_cast<IInputStreamFilter*>(v.GetClassStore().CreateObject(kTableDecoder)));
    EXPECT_THROW(filter->Connect(stream.Get()), CTimeoutException);
    EXPECT_FALSE(CRefPtr<IInputStream>::Adopt(filter->GetInputStream()));
}

TEST_F(PluginTable, StreamMayUseTheDecoderInsideOfItsCalls) {
    Load(0);
    const auto make = [] {
        return CRefPtr<IInputStreamFilter>::Adopt(
            static_cast<IInputStreamFilter*>(v.GetClassStore().CreateObject(kTableDecoder)));
    };
    const auto stream = Make<CTableActingStream>();
    stream->bytes = {'T', 's', 1, 2, 3};
    std::uint8_t byte = 0;
    // A read inside of a read: the plug-in is not called from inside of its own call.
    auto filter = make();
    filter->Connect(stream.Get());
    stream->calls = 0;
    stream->act = [&] { EXPECT_THROW(filter->Read(&byte, 1), CInvalidStateException); };
    EXPECT_EQ(filter->Read(&byte, 1), 1U);
    EXPECT_EQ(byte, 1);
    // It is disconnected, and destroyed, while the plug-in reads.
    stream->calls = 0;
    stream->act = [&] { filter->Disconnect(); };
    EXPECT_EQ(filter->Read(&byte, 1), 1U);
    EXPECT_TRUE(filter->Eof());
    filter->Connect(stream.Get());
    IInputStreamFilter* dying = filter.Detach();
    stream->calls = 0;
    stream->act = [&] { EXPECT_EQ(dying->Release(), 0); };
    EXPECT_EQ(dying->Read(&byte, 1), 1U);
    // And while it opens.
    dying = make().Detach();
    stream->calls = 0;
    stream->act = [&] { EXPECT_EQ(dying->Release(), 0); };
    dying->Connect(stream.Get());
    // Connected to another stream meanwhile, it stays with that.
    filter = make();
    const auto other = Bytes("Tg");
    stream->calls = 0;
    stream->act = [&] { filter->Connect(other.Get()); };
    filter->Connect(stream.Get());
    EXPECT_EQ(filter->GetLength(), 1000);
    EXPECT_TRUE(CRefPtr<IInputStream>::Adopt(filter->GetInputStream()).Get() == other.Get());
    filter->Disconnect();
    // Nobody holds the stream any more.
    EXPECT_EQ(stream->AddRef(), 2);
    stream->Release();
}

TEST_F(PluginTable, StreamWithoutPositionsGoesForward) {
    Load(0);
    const auto stream = Bytes("Tl");
    stream->format.Set(HeadOnly(kTableForwardSource));
    const auto filter = CRefPtr<IInputStreamFilter>::Adopt(
        static_cast<IInputStreamFilter*>(v.GetClassStore().CreateObject(kTableForward)));
    EXPECT_THROW(filter->GetLength(), COperationNotSupportedException);
    filter->Connect(stream.Get());
    EXPECT_EQ(filter->GetCapabilities(), 6U);
    EXPECT_THROW(filter->GetLength(), COperationNotSupportedException);
    EXPECT_THROW(filter->Seek(5), COperationNotSupportedException);
    filter->Seek(0);
    filter->Skip(900);
    EXPECT_EQ(filter->Tell(), 900);
    TBytes bytes(200);
    EXPECT_EQ(filter->Read(bytes.data(), 200), 100U);
    EXPECT_FALSE(filter->Eof());
    EXPECT_EQ(filter->Read(bytes.data(), 200), 0U);
    EXPECT_TRUE(filter->Eof());
    filter->Disconnect();
    EXPECT_EQ(stream->AddRef(), 2);
    stream->Release();
}

TEST_F(PluginTable, ObjectsThatOutliveThePluginDoNotCallIt) {
    Load(0);
    const auto decoded = Decode("Tg");
    const auto unused = CRefPtr<IInputStreamFilter>::Adopt(
        static_cast<IInputStreamFilter*>(v.GetClassStore().CreateObject(kTableDecoder)));
    store_.Close();
    std::uint8_t byte = 0;
    EXPECT_THROW(decoded->Read(&byte, 1), CInvalidStateException);
    EXPECT_THROW(unused->Connect(Bytes("Tg").Get()), CDataFormatException);
    // The class store still has the class, and no plug-in behind it.
    EXPECT_EQ(v.GetClassStore().CreateObject(kTableDecoder), nullptr);
    // Loaded once more, it is the same class again; the old object stays without a plug-in.
    CPluginStore other;
    other.LoadPluginFile(ToVorlund(folder_.PathOf("table")).c_str());
    EXPECT_EQ(Decode("Tg")->Read(&byte, 1), 1U);
    EXPECT_THROW(decoded->Read(&byte, 1), CInvalidStateException);
    other.Close();
}

TEST_F(PluginTable, DevicesAreOutputsAndInputs) {
    Load(0);
    const auto output = CRefPtr<IDevice>::Adopt(v.GetDeviceClassStore().CreateDevice(DEVICE_TYPE_AUDIO))
                            .Query<IAudioOutput>();
    ASSERT_TRUE(output);
    output->OpenOutput({SAMPLE_FORMAT_16BIT, 2, 48000}, 0.1);
    EXPECT_EQ(output->GetDeviceFormat().samplesPerSec, 48000U);
    EXPECT_EQ(output->GetDeviceFormat().channels, 2U);
    output->Close();
    try {
        output->OpenOutput({SAMPLE_FORMAT_16BIT, 2, 1234}, 0.1);
        ADD_FAILURE();
    } catch (const CFailedException& failure) {
        EXPECT_EQ(Narrow(failure.GetReason()), "No such rate");
    }
    EXPECT_THROW(output->OpenOutput({SAMPLE_FORMAT_16BIT, 2, 1235}, 0.1), CFailedException);
    output->OpenOutput({SAMPLE_FORMAT_16BIT, 2, 1236}, 0.1);
    output->Close();
    const auto input = CreateAs<IAudioInput>(kTableInput);
    ASSERT_TRUE(input);
    input->OpenInput({SAMPLE_FORMAT_16BIT, 1, 8000}, 0.1);
    input->Close();
}

} // namespace
} // namespace vorlund::test
