/// \file
/// Something that can be opened for writing and then takes no byte.
#pragma once

#include <vorlund/Platform.h>

namespace vorlund::test {

/// Open the path once, then call `Refuse`: from then on the system refuses every write.
class CRefusingPlace {
public:
    CRefusingPlace();
    CRefusingPlace(const CRefusingPlace&) = delete;
    CRefusingPlace& operator=(const CRefusingPlace&) = delete;
    ~CRefusingPlace() { Refuse(); }

    const wstring& GetPath() const { return path_; }
    void Refuse();

private:
    wstring path_;
    void* reader_ = nullptr;
};

} // namespace vorlund::test
