// The plug-in store on its own: folders and extensions, loading and closing, enumerations and the dump. What
// it does in the life of the library is in PluginLifecycle_test.cpp.
#include <vorlund/ClassIds.h>
#include <vorlund/Device.h>
#include <vorlund/Exception.h>
#include <vorlund/ObjectList.h>
#include <vorlund/PluginStore.h>
#include <vorlund/RefPtr.h>

#include "api/plugins/TestPlugins.h"
#include "data/file/PathFailures.h"
#include "support/DebugRecorder.h"
#include "support/Failures.h"
#include "support/KnownFailures.h"
#include "support/LibraryScope.h"
#include "support/Probes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vorlund::test {
namespace {

using TTexts = std::vector<std::string>;

constexpr TFailure kCannotEnd{VRL_L("VrlClosePlugin"), VRL_L("tests/plugins/raising_close"), 16,
                              VRL_L("Plug-in cannot end")};

class PluginStore : public testing::Test {
protected:
    PluginStore() { store_.AddPluginPath(folder_.GetPath().c_str()); }
    ~PluginStore() noexcept override { store_.Close(); }

    static TTexts Texts(IObjectEnumerator* texts) {
        const auto owner = CRefPtr<IObjectEnumerator>::Adopt(texts);
        EXPECT_EQ(owner->GetClassId(), classid::CPushObjectEnumerator);
        EXPECT_EQ(ReferencesOf(owner.Get()), 1);
        TTexts result;
        while (owner->HasNext()) {
            const auto item = CRefPtr<IObject>::Adopt(owner->GetNext());
            EXPECT_EQ(item->GetClassId(), classid::CStringObject);
            result.push_back(Narrow(item.Query<IStringObject>()->GetString().GetBuffer()));
        }
        return result;
    }
    TTexts Loaded() const { return Texts(store_.EnumerateLoadedPlugins()); }
    /// What is available in `folder_`: the names that a store without it does not list.
    TTexts Available() const {
        TTexts names = Texts(store_.EnumerateAvailablePlugins());
        const CPluginStore other;
        const TTexts others = Texts(other.EnumerateAvailablePlugins());
        if (others.size() > names.size() ||
            !std::equal(others.begin(), others.end(), names.begin(),
                        names.begin() + static_cast<std::ptrdiff_t>(others.size()))) {
            ADD_FAILURE() << "the folders that every store looks in do not come first";
            return names;
        }
        names.erase(names.begin(), names.begin() + static_cast<std::ptrdiff_t>(others.size()));
        return names;
    }
    /// What was reported since the last call.
    TTexts Reports() {
        TTexts texts = recorder_.GetTexts(DEBUG_MESSAGE_OUTPUT);
        EXPECT_EQ(texts.size(), recorder_.GetEntries().size());
        recorder_.Clear();
        return texts;
    }
    static TTexts Sorted(TTexts texts) {
        std::sort(texts.begin(), texts.end());
        return texts;
    }

    CPluginFolder folder_;
    CLibraryScope library_;
    CDebugRecorder recorder_;
    CPluginStore store_;
};

// Folders and extensions.

TEST_F(PluginStore, BeginsWithTheFolderAndTheExtensionOfTheSystem) {
    const CPluginStore store;
    // The shared library under test lies beside this program.
    const TTexts names = Texts(store.EnumerateAvailablePlugins());
    EXPECT_TRUE(std::any_of(names.begin(), names.end(), [](const std::string& name) {
        return name == "vorlund" || name == "libvorlund";
    })) << names.size();
}

TEST_F(PluginStore, NeedsNoLibraryToBeMadeAndFilled) {
    v.Close();
    {
        CPluginStore store;
        store.Init();
        store.AddPluginPath(VRL_L("folder"));
        store.AddPluginExtension(VRL_L("plg"));
        EXPECT_FALSE(store.IsPluginLoaded(VRL_L("accepting")));
        store.LoadAvailablePlugins();
        store.LoadPlugin(VRL_L("accepting"));
        store.Close();
    }
    EXPECT_EQ(Reports(), TTexts());
    ExpectRaises<CBugException>(classstorefailures::kCreateByIdClosed,
                                [&] { store_.EnumerateLoadedPlugins(); });
    ExpectRaises<CBugException>(classstorefailures::kCreateByIdClosed,
                                [&] { store_.EnumerateAvailablePlugins(); });
    ExpectRaises<CBugException>(classstorefailures::kCreateByIdClosed, [&] { store_.Dump(); });
}

TEST_F(PluginStore, FolderMayEndInASeparator) {
    for (const wchar* const end : {VRL_L("/"), VRL_L("")}) {
        CPluginFolder folder;
        folder.Add("accepting");
        CPluginStore store;
        store.AddPluginPath((folder.GetPath() + end).c_str());
        store.LoadAvailablePlugins();
        EXPECT_EQ(Texts(store.EnumerateLoadedPlugins()), TTexts{"accepting"});
        store.Close();
    }
}

TEST_F(PluginStore, FolderWithBackslashes) {
    folder_.Add("accepting");
    CPluginStore store;
    store.AddPluginPath(WithBackslashes(folder_.GetPath()).c_str());
    store.LoadAvailablePlugins();
    EXPECT_EQ(Texts(store.EnumerateLoadedPlugins()), TTexts{"accepting"});
    store.Close();
}

TEST_F(PluginStore, RelativeFolder) {
    folder_.Add("accepting");
    const CWorkingFolder working(folder_.GetFolder().parent_path());
    CPluginStore store;
    store.AddPluginPath(ToVorlund(folder_.GetFolder().filename()).c_str());
    store.LoadAvailablePlugins();
    EXPECT_EQ(Texts(store.EnumerateLoadedPlugins()), TTexts{"accepting"});
    store.Close();
}

TEST_F(PluginStore, NothingAvailableIsNoFailure) {
    store_.LoadAvailablePlugins();
    EXPECT_EQ(Available(), TTexts());
    EXPECT_EQ(Loaded(), TTexts());
    EXPECT_EQ(Reports(), TTexts());
}

TEST_F(PluginStore, FolderThatDoesNotExistIsPassedOverSilently) {
    folder_.Add("accepting");
    CPluginStore store;
    store.AddPluginPath(ToVorlund(folder_.At("missing")).c_str());
    store.AddPluginPath(nullptr);
    store.AddPluginPath(folder_.GetPath().c_str());
    store.LoadAvailablePlugins();
    EXPECT_EQ(Texts(store.EnumerateLoadedPlugins()), TTexts{"accepting"});
    store.Close();
    EXPECT_EQ(Reports(), (TTexts{"init accepting", "close accepting"}));
}

TEST_F(PluginStore, FolderThatIsAFileRaisesWhatTheFolderRaises) {
    const fs::path file = folder_.At("file");
    WriteFile(file, "no folder");
    CPluginStore store;
    store.AddPluginPath(ToVorlund(file).c_str());
    ExpectRaisesFor<CFileAccessException>(ToVorlund(file), filefailures::kFolderIsNoDirectory,
                                          [&] { store.EnumerateAvailablePlugins(); });
    recorder_.Clear();
    // There is no plug-in in it.
    store.LoadAvailablePlugins();
    EXPECT_EQ(Reports(), TTexts());
}

TEST_F(PluginStore, EveryExtensionIsTried) {
    folder_.Add("accepting", "accepting.plg");
    EXPECT_EQ(Available(), TTexts());
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_EQ(Loaded(), TTexts());
    store_.AddPluginExtension(VRL_L("plg"));
    EXPECT_EQ(Texts(store_.EnumerateAvailablePlugins()).back(), "accepting");
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_EQ(Loaded(), TTexts{"accepting"});
}

TEST_F(PluginStore, ExtensionsAreExact) {
    folder_.Add("accepting", "accepting.PLG");
    folder_.Add("accepting", "other.plgx");
    store_.AddPluginExtension(VRL_L("plg"));
    EXPECT_EQ(Available(), TTexts());
    store_.LoadAvailablePlugins();
    EXPECT_EQ(Reports(), TTexts());
}

TEST_F(PluginStore, ExtensionWithADotMakesTwo) {
    folder_.Add("accepting", "one.plg");
    folder_.Add("accepting", "two..plg");
    store_.AddPluginExtension(VRL_L(".plg"));
    // The extension of a file never has a dot.
    EXPECT_EQ(Available(), TTexts());
    store_.LoadPlugin(VRL_L("one"));
    store_.LoadPlugin(VRL_L("two"));
    EXPECT_EQ(Loaded(), TTexts{"two"});
}

TEST_F(PluginStore, PluginUnderTwoExtensionsIsLoadedTwice) {
    folder_.Add("accepting");
    folder_.Add("accepting", "accepting.plg");
    store_.AddPluginExtension(VRL_L("plg"));
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_EQ(Loaded(), (TTexts{"accepting", "accepting"}));
}

// Loading and closing.

TEST_F(PluginStore, LoadsAndCloses) {
    const fs::path file = folder_.Add("accepting");
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_EQ(Reports(), TTexts{"init accepting"});
    EXPECT_TRUE(IsInProcess(file));
    EXPECT_TRUE(store_.IsPluginLoaded(VRL_L("accepting")));
    EXPECT_EQ(Loaded(), TTexts{"accepting"});
    store_.Close();
    EXPECT_EQ(Reports(), TTexts{"close accepting"});
    EXPECT_FALSE(IsInProcess(file));
}

TEST_F(PluginStore, ClosedPluginsStillCountAsLoaded) {
    folder_.Add("accepting");
    store_.LoadPlugin(VRL_L("accepting"));
    store_.Close();
    EXPECT_TRUE(store_.IsPluginLoaded(VRL_L("accepting")));
    EXPECT_EQ(Loaded(), TTexts{"accepting"});
}

TEST_F(PluginStore, PluginsAreClosedOnce) {
    folder_.Add("accepting");
    store_.LoadPlugin(VRL_L("accepting"));
    store_.Close();
    store_.Close();
    EXPECT_EQ(Reports(), (TTexts{"init accepting", "close accepting"}));
    store_.LoadPlugin(VRL_L("accepting"));
    store_.Close();
    EXPECT_EQ(Reports(), (TTexts{"init accepting", "close accepting"}));
    EXPECT_EQ(Loaded(), (TTexts{"accepting", "accepting"}));
}

TEST_F(PluginStore, PluginsThatAreKeptAreClosedAndStayInTheProcess) {
    const fs::path file = folder_.Add("accepting");
    store_.LoadPlugin(VRL_L("accepting"));
    store_.KeepInProcess(true);
    store_.Close();
    store_.KeepInProcess(false);
    EXPECT_EQ(Reports(), (TTexts{"init accepting", "close accepting"}));
    EXPECT_TRUE(IsInProcess(file));
}

TEST_F(PluginStore, AbandonedWhileAnExceptionPassesTheyStayInTheProcess) {
    struct TLeaver {
        CVorlund& library;
        ~TLeaver() { library.Abandon(); }
    };
    const fs::path file = folder_.Add("accepting");
    const auto load = [&](CVorlund& library) {
        EXPECT_EQ(library.GetPluginStore().LoadPluginFile(ToVorlund(file).c_str()), PLUGIN_LOADED);
    };
    CVorlund library;
    load(library);
    library.Abandon();
    EXPECT_FALSE(IsInProcess(file));
    try {
        const TLeaver leaver{library};
        load(library);
        throw 1;
    } catch (int) {
    }
    EXPECT_TRUE(IsInProcess(file));
    EXPECT_EQ(Reports(), (TTexts{"init accepting", "close accepting", "init accepting", "close accepting"}));
}

TEST_F(PluginStore, DestructionClosesNothing) {
    const fs::path file = folder_.Add("accepting");
    {
        CPluginStore store;
        store.AddPluginPath(folder_.GetPath().c_str());
        store.LoadPlugin(VRL_L("accepting"));
    }
    EXPECT_EQ(Reports(), TTexts{"init accepting"});
    EXPECT_TRUE(IsInProcess(file));
}

TEST_F(PluginStore, NamesAreCaseSensitive) {
    folder_.Add("accepting");
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_FALSE(store_.IsPluginLoaded(VRL_L("Accepting")));
    EXPECT_FALSE(store_.IsPluginLoaded(VRL_L("")));
    EXPECT_FALSE(store_.IsPluginLoaded(nullptr));
}

TEST_F(PluginStore, NamesOutsideAscii) {
    const fs::path name(u8"\u00D6l-\u97F3-\U0001F3B5");
    const fs::path file = folder_.Add("accepting", folder_.PathOf(name).filename());
    const wstring text = ToVorlund(name);
    EXPECT_EQ(Available(), TTexts{Narrow(text)});
    store_.LoadAvailablePlugins();
    EXPECT_TRUE(store_.IsPluginLoaded(text.c_str()));
    EXPECT_TRUE(IsInProcess(file));
    store_.Close();
    EXPECT_FALSE(IsInProcess(file));
}

TEST_F(PluginStore, UnknownNamesAreSilent) {
    const int number = CreateAs<IObject>(classid::CObject)->GetObjectNumber();
    store_.LoadPlugin(VRL_L("missing"));
    store_.LoadPlugin(VRL_L(""));
    store_.LoadPlugin(nullptr);
    EXPECT_EQ(Reports(), TTexts());
    EXPECT_EQ(Loaded(), TTexts());
    // No object is made for what does not exist; the one here is the enumerator's.
    EXPECT_EQ(CreateAs<IObject>(classid::CObject)->GetObjectNumber(), number + 2);
}

TEST_F(PluginStore, RefusingPluginIsUnloaded) {
    const fs::path file = folder_.Add("refusing");
    store_.LoadAvailablePlugins();
    EXPECT_EQ(Reports(), TTexts{"init refusing"});
    EXPECT_FALSE(IsInProcess(file));
    EXPECT_FALSE(store_.IsPluginLoaded(VRL_L("refusing")));
    EXPECT_EQ(Loaded(), TTexts());
    EXPECT_EQ(Available(), TTexts{"refusing"});
    store_.Close();
    EXPECT_EQ(Reports(), TTexts());
}

TEST_F(PluginStore, LibraryWithoutBothEntriesIsNoPlugin) {
    const fs::path file = folder_.Add("half");
    store_.LoadAvailablePlugins();
    store_.LoadPlugin(VRL_L("half"));
    EXPECT_EQ(Reports(), TTexts());
    EXPECT_FALSE(IsInProcess(file));
    EXPECT_EQ(Loaded(), TTexts());
}

TEST_F(PluginStore, WhatIsNoLibraryIsNoPlugin) {
    WriteFile(folder_.PathOf("empty"), "");
    WriteFile(folder_.PathOf("text"), "?VrlInitPlugin@@YA_NXZ and ?VrlClosePlugin@@YAXXZ");
    fs::create_directory(folder_.PathOf("folder"));
    EXPECT_EQ(Sorted(Available()), (TTexts{"empty", "text"}));
    store_.LoadAvailablePlugins();
    for (const wchar* const name : {VRL_L("empty"), VRL_L("text"), VRL_L("folder")}) store_.LoadPlugin(name);
    EXPECT_EQ(Reports(), TTexts());
    EXPECT_EQ(Loaded(), TTexts());
}

TEST_F(PluginStore, PluginInTwoFoldersIsLoadedTwiceForEachOfItsTwoNames) {
    CPluginFolder second;
    const fs::path files[] = {folder_.Add("accepting"), second.Add("accepting")};
    store_.AddPluginPath(second.GetPath().c_str());
    EXPECT_EQ(Available(), (TTexts{"accepting", "accepting"}));
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_EQ(Loaded(), TTexts(2, "accepting"));
    store_.Close();
    Reports();

    store_.LoadAvailablePlugins();
    EXPECT_EQ(Reports(), TTexts(4, "init accepting"));
    EXPECT_EQ(Loaded(), TTexts(6, "accepting"));
    for (const fs::path& file : files) EXPECT_TRUE(IsInProcess(file));
    store_.Close();
    EXPECT_EQ(Reports(), TTexts(4, "close accepting"));
    for (const fs::path& file : files) EXPECT_FALSE(IsInProcess(file));
}

TEST_F(PluginStore, ClosesInTheOrderOfLoading) {
    for (const char* const name : {"creating", "accepting", "refusing"}) folder_.Add(name);
    store_.LoadPlugin(VRL_L("creating"));
    store_.LoadPlugin(VRL_L("accepting"));
    store_.LoadPlugin(VRL_L("refusing"));
    store_.LoadPlugin(VRL_L("creating"));
    EXPECT_EQ(Loaded(), (TTexts{"creating", "accepting", "creating"}));
    store_.Close();
    EXPECT_EQ(Reports(), (TTexts{"init creating", "init accepting", "init refusing", "init creating",
                                 "close creating", "close accepting", "close creating"}));
}

TEST_F(PluginStore, DevelopmentVariantsAreNotAvailable) {
    for (const char* const name : {"accepting_d", "_d", "other_D", "accepting_d_", "d"})
        folder_.Add("accepting", folder_.PathOf(name).filename());
    EXPECT_EQ(Sorted(Available()), (TTexts{"accepting_d_", "d", "other_D"}));
    // By its name it loads like any other.
    store_.LoadPlugin(VRL_L("accepting_d"));
    EXPECT_EQ(Loaded(), TTexts{"accepting_d"});
}

TEST_F(PluginStore, ExceptionOfAnInitEntryPassesOn) {
    const fs::path file = folder_.Add("raising");
    folder_.Add("accepting");
    ExpectRaises<CInvalidStateException>(kCannotStart, [&] { store_.LoadPlugin(VRL_L("raising")); });
    // The exception's texts lie in the module, so it stays; it is not recorded.
    EXPECT_TRUE(IsInProcess(file));
    EXPECT_EQ(Loaded(), TTexts());
    // The store is as it was.
    recorder_.Clear();
    store_.LoadPlugin(VRL_L("accepting"));
    store_.Close();
    EXPECT_EQ(Reports(), (TTexts{"init accepting", "close accepting"}));
}

TEST_F(PluginStore, ExceptionOfACloseEntryPassesOn) {
    const fs::path raising = folder_.Add("raising_close");
    const fs::path behind = folder_.Add("accepting");
    store_.LoadPlugin(VRL_L("raising_close"));
    store_.LoadPlugin(VRL_L("accepting"));
    recorder_.Clear();
    ExpectRaises<CInvalidStateException>(kCannotEnd, [&] { store_.Close(); });
    EXPECT_TRUE(IsInProcess(raising));
    EXPECT_TRUE(IsInProcess(behind));
    recorder_.Clear();
    // The next Close goes on with the plug-in before it.
    store_.Close();
    EXPECT_EQ(Reports(), TTexts{"close accepting"});
    EXPECT_FALSE(IsInProcess(behind));
    EXPECT_EQ(Loaded(), (TTexts{"raising_close", "accepting"}));
}

TEST_F(PluginStore, InitEntryMayCreateObjects) {
    folder_.Add("creating");
    store_.LoadPlugin(VRL_L("creating"));
    EXPECT_EQ(Reports(), TTexts{"init creating"});
    const auto object = CRefPtr<IObject>::Adopt(v.GetClassStore().CreateObject(VRL_L("test::CPluginObject")));
    EXPECT_EQ(object->GetClassId(), CId(0x7E57C1A5, 1, 2, 3));
}

TEST_F(PluginStore, InitEntryMayRegisterADevice) {
    folder_.Add("with_device");
    store_.LoadPlugin(VRL_L("with_device"));
    {
        const auto device = CreateAs<IDevice>(classid::CAudioDevice);
        ASSERT_TRUE(device);
        EXPECT_EQ(device->GetClassId(), CId(0x7E57C1A5, 4, 5, 6));
        device->Open();
        device->Close();
    }
    EXPECT_EQ(Reports(), (TTexts{"open device", "close device"}));
    ExpectRaises<CClassNotFoundException>(devicestorefailures::kNoClass,
                                          [] { v.GetDeviceClassStore().CreateDevice(DEVICE_TYPE_VIDEO); });
    recorder_.Clear();
}

// Enumerations and the dump.

TEST_F(PluginStore, EnumerationsAreSnapshots) {
    folder_.Add("accepting");
    const auto loaded = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateLoadedPlugins());
    const auto available = CRefPtr<IObjectEnumerator>::Adopt(store_.EnumerateAvailablePlugins());
    store_.LoadPlugin(VRL_L("accepting"));
    fs::copy_file(PluginFile("accepting"), folder_.PathOf("second"));
    EXPECT_FALSE(loaded->HasNext());
    CString last;
    while (available->HasNext())
        last = CRefPtr<IObject>::Adopt(available->GetNext()).Query<IStringObject>()->GetString();
    EXPECT_EQ(Narrow(last.GetBuffer()), "accepting");
}

TEST_F(PluginStore, DumpTellsTheLoadedAndTheOthers) {
    for (const char* const name : {"creating", "accepting", "refusing"}) folder_.Add(name);
    CPluginFolder second;
    second.Add("refusing");
    store_.AddPluginPath(second.GetPath().c_str());
    for (const wchar* const name :
         {VRL_L("creating"), VRL_L("accepting"), VRL_L("refusing"), VRL_L("creating")})
        store_.LoadPlugin(name);
    recorder_.Clear();
    store_.Dump();
    TTexts lines = Reports();
    ASSERT_GE(lines.size(), 5u);
    EXPECT_EQ(
        TTexts(lines.begin(), lines.begin() + 3),
        (TTexts{"Plugin creating is loaded", "Plugin accepting is loaded", "Plugin creating is loaded"}));
    // Once per folder, behind the libraries beside this program.
    EXPECT_EQ(TTexts(lines.end() - 2, lines.end()), TTexts(2, "Plugin refusing is not loaded"));
    for (auto line = lines.begin() + 3; line != lines.end(); ++line)
        EXPECT_TRUE(line->ends_with(" is not loaded")) << *line;
    // The same when they are closed.
    store_.Close();
    recorder_.Clear();
    store_.Dump();
    EXPECT_EQ(Reports(), lines);
}

// Service classes that were replaced.

IObject* MakeNothing() {
    return nullptr;
}

/// Leaves the class store with class `id` yielding nothing, and the others as they are.
void Replace(const CId& id, std::initializer_list<CId> kept) {
    std::vector<TClassInfo> infos;
    for (const CId& other : kept) infos.push_back(*v.GetClassStore().GetClassInfo(other));
    v.GetClassStore().Clear();
    v.GetClassStore().RegisterClassVrl({id, VRL_L("test::CNone"), &MakeNothing});
    for (const TClassInfo& info : infos) v.GetClassStore().RegisterClassVrl(info);
}

TEST_F(PluginStore, ReplacedServiceClassesAreABug) {
    folder_.Add("accepting");
    store_.LoadPlugin(VRL_L("accepting"));
    constexpr const wchar* kFile = VRL_L("src/vorlund/api/PluginStore");
    constexpr const wchar* kAvailable = VRL_L("vorlund::CPluginStore::EnumerateAvailablePlugins");
    constexpr const wchar* kLoaded = VRL_L("vorlund::CPluginStore::EnumerateLoadedPlugins");
    const struct {
        CId id;
        TFailure available;
        TFailure loaded;
    } rows[] = {
        {classid::CFolder, {kAvailable, kFile, 147, VRL_L("Cannot create folder")}, {}},
        {classid::CStringObject,
         {kAvailable, kFile, 162, VRL_L("Cannot create string object")},
         {kLoaded, kFile, 181, VRL_L("Cannot create string object")}},
        {classid::CPushObjectEnumerator,
         {kAvailable, kFile, 138, VRL_L("Cannot create enumerator")},
         {kLoaded, kFile, 176, VRL_L("Cannot create enumerator")}},
    };
    for (const auto& row : rows) {
        v.Close();
        v.Init();
        Replace(row.id, {classid::CFolder, classid::CFile, classid::CObjectList, classid::CStringObject,
                         classid::CPushObjectEnumerator});
        ExpectRaises<CBugException>(row.available, [&] { store_.EnumerateAvailablePlugins(); });
        if (row.loaded.method)
            ExpectRaises<CBugException>(row.loaded, [&] { store_.EnumerateLoadedPlugins(); });
    }
    // A file class that yields nothing finds nothing.
    v.Close();
    v.Init();
    Replace(classid::CFile, {});
    recorder_.Clear();
    store_.LoadPlugin(VRL_L("accepting"));
    EXPECT_EQ(Reports(), TTexts());
}

} // namespace
} // namespace vorlund::test
