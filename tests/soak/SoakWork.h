/// \file
/// What the threads of the soak do with the library.
#pragma once

#include <vorlund/BinaryLock.h>
#include <vorlund/ReadWriteLock.h>
#include <vorlund/String.h>

#include <atomic>
#include <filesystem>

namespace vorlund::soak {

/// How much is done in a round, and how much has been done altogether.
struct TCounts {
    long long decodes;
    long long devices;
    long long waits;
    long long loads; ///< plug-ins
};

/// A file with PCM bytes in it, and the folder of its own that it lies in; both go with the object.
class CInputFile {
public:
    static constexpr int kDataBytes = 6000;

    CInputFile();
    CInputFile(const CInputFile&) = delete;
    CInputFile& operator=(const CInputFile&) = delete;
    ~CInputFile();

    const wchar* GetPath() const { return path_.c_str(); }
    const wchar* GetFolder() const { return folderPath_.c_str(); }

private:
    std::filesystem::path folder_;
    wstring path_;
    wstring folderPath_;
};

/// A path as the library takes it.
wstring WidePath(const std::filesystem::path& path);

/// What the threads of a round share.
struct TShared {
    explicit TShared(const CInputFile& input) : file(input) {}

    const CInputFile& file;
    CReadWriteLock lock;
    CBinaryLock binary;
    long left = 0; ///< guarded by both locks, like `right`
    long right = 0;
};

/// One thread's part of a round. Raises `std::runtime_error` when the library does not do what it should, and
/// what the library raises.
void DoPart(TShared& shared, const TCounts& part);

} // namespace vorlund::soak
