// Cases whose results are known bit for bit; golden/confirm_cases.py computed all of them a second time.
#include "GoldenOperations.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <sstream>
#include <string>

namespace vorlund::test {
namespace {

constexpr const char* kCases[] = {
#include "golden/cases.inc"
};

const TOperationRow* Find(const std::string& name) {
    for (const TOperationRow& row : kOperations)
        if (name == row.name) return &row;
    return nullptr;
}

float Parse(const std::string& word) {
    if (word == "nan") return std::numeric_limits<float>::quiet_NaN();
    return std::bit_cast<float>(static_cast<std::uint32_t>(std::stoul(word, nullptr, 16)));
}

/// Equal bits, or both NaN: which of them it is says nothing.
bool IsSame(float a, float b) {
    return (std::isnan(a) && std::isnan(b)) ||
           std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

TEST(Golden, EveryCaseHasTheSameBits) {
    std::map<std::string, int> counts;
    for (const char* const text : kCases) {
        std::istringstream words(text);
        std::string name, word;
        words >> name;
        const TOperationRow* const row = Find(name);
        ASSERT_TRUE(row) << text;
        float inputs[32], outputs[16];
        for (int i = 0; i < row->inputs; ++i) {
            words >> word;
            inputs[i] = Parse(word);
        }
        words >> word;
        ASSERT_EQ(word, "=") << text;
        row->run(inputs, outputs);
        for (int i = 0; i < row->outputs; ++i) {
            ASSERT_TRUE(words >> word) << text;
            EXPECT_TRUE(IsSame(outputs[i], Parse(word)))
                << "number " << i << " of " << text << " is " << outputs[i] << " and not " << Parse(word);
        }
        ++counts[name];
    }
    for (const TOperationRow& row : kOperations) EXPECT_EQ(counts[row.name], row.cases) << row.name;
}

} // namespace
} // namespace vorlund::test
