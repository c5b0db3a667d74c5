// The suites in C as cases of GoogleTest.
#include "Suite.h"

#include "support/DebugRecorder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>
#include <thread>

namespace {

class CaseInC : public testing::Test {
public:
    explicit CaseInC(const c_case& row) : row_(row) {}
    void TestBody() override {
        row_.run();
        // Whatever a case leaves open would disturb the next one. A thread of the library may be on its way
        // out of a call.
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        for (std::int32_t code = vorlund_close(); code != VORLUND_ERROR_NOT_OPEN; code = vorlund_close()) {
            if (code != VORLUND_OK && std::chrono::steady_clock::now() > limit) break;
            std::this_thread::yield();
        }
        std::uint32_t handles = 1;
        vorlund_handle_count(&handles);
        EXPECT_EQ(handles, 0U);
        std::error_code ignored;
        std::filesystem::remove(c_temporary_file(), ignored);
    }

private:
    const c_case& row_;
};

} // namespace

void c_fail(const char* file, int line, const char* what) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    ADD_FAILURE_AT(file, line) << what;
}

const char* c_temporary_file() {
    static const std::string path = (std::filesystem::temp_directory_path() / "vorlund_c_tests.tmp").string();
    return path.c_str();
}

int main(int argc, char** argv) {
    vorlund::test::SilenceDebugMessages();
    testing::InitGoogleTest(&argc, argv);
    for (unsigned int i = 0; i < c_suite_count; ++i) {
        const c_suite& suite = *c_suites[i];
        for (unsigned int j = 0; j < suite.count; ++j) {
            const c_case& row = suite.cases[j];
            testing::RegisterTest(suite.name, row.name, nullptr, nullptr, __FILE__, __LINE__,
                                  [&row]() -> CaseInC* { return new CaseInC(row); });
        }
    }
    return RUN_ALL_TESTS();
}
