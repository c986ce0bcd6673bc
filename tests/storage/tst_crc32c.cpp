#include "utils/storage/journal/Crc32c.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using namespace veltor::utils;

namespace {

std::uint32_t bitByBit(std::uint32_t previous, const unsigned char* data, std::size_t size)
{
    std::uint32_t crc = ~previous;
    for (std::size_t i = 0; i < size; ++i) {
        crc ^= data[i];
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1u) != 0 ? 0x82F63B78u : 0u);
    }
    return ~crc;
}

std::vector<unsigned char> randomBytes(std::size_t size, unsigned seed)
{
    std::mt19937 generator(seed);
    std::vector<unsigned char> bytes(size);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(generator()); });
    return bytes;
}

class Crc32cTest : public testing::TestWithParam<Crc32cVariant>
{
protected:
    void SetUp() override
    {
        if (!GetParam().available)
            GTEST_SKIP() << "not on this processor";
    }

    std::uint32_t crc(std::uint32_t previous, const unsigned char* data, std::size_t size) const
    {
        return GetParam().function(previous, data, size);
    }
};

TEST_P(Crc32cTest, givesPublishedValues)
{
    // Check value of the CRC catalogues; the rest from RFC 3720, B.4.
    std::vector<unsigned char> ascending(32);
    for (std::size_t i = 0; i < ascending.size(); ++i)
        ascending[i] = static_cast<unsigned char>(i);
    EXPECT_EQ(crc(0, reinterpret_cast<const unsigned char*>("123456789"), 9), 0xE3069283u);
    EXPECT_EQ(crc(0, std::vector<unsigned char>(32, 0x00).data(), 32), 0x8A9136AAu);
    EXPECT_EQ(crc(0, std::vector<unsigned char>(32, 0xFF).data(), 32), 0x62A8AB43u);
    EXPECT_EQ(crc(0, ascending.data(), 32), 0x46DD794Eu);
    EXPECT_EQ(crc(0x12345678u, nullptr, 0), 0x12345678u);
}

TEST_P(Crc32cTest, agreesWithTheDefinitionForAllLengthsAndAlignments)
{
    constexpr std::size_t longest = 1024;
    for (std::size_t alignment = 0; alignment < 16; ++alignment) {
        std::uint32_t expected = 0xC0FFEEu;
        for (std::size_t length = 0; length <= longest; ++length) {
            // Ends with its allocation, so that AddressSanitizer sees a read beyond.
            std::vector<unsigned char> bytes = randomBytes(alignment + length, 7);
            const unsigned char* begin = bytes.data() + alignment;
            if (length > 0)
                expected = bitByBit(expected, begin + length - 1, 1);
            ASSERT_EQ(crc(0xC0FFEEu, begin, length), expected)
                << "length " << length << ", alignment " << alignment;
        }
    }
}

TEST_P(Crc32cTest, agreesWithTheDefinitionForLongRunsAndAnySplit)
{
    const std::vector<unsigned char> bytes = randomBytes(200'000, 11);
    std::mt19937 generator(13);
    for (int round = 0; round < 50; ++round) {
        const std::size_t begin = generator() % 64;
        const std::size_t size = generator() % (bytes.size() - begin);
        const std::size_t split = generator() % (size + 1);
        const unsigned char* data = bytes.data() + begin;
        const std::uint32_t expected = bitByBit(0, data, size);
        ASSERT_EQ(crc(0, data, size), expected) << "size " << size;
        ASSERT_EQ(crc(crc(0, data, split), data + split, size - split), expected)
            << "size " << size << ", split at " << split;
    }
}

INSTANTIATE_TEST_SUITE_P(AllVariants, Crc32cTest, testing::ValuesIn(crc32cVariants()),
                         [](const auto& variant) { return std::string(variant.param.name); });

TEST(Crc32c, continuesFromAPreviousResultThroughTheDispatch)
{
    const std::string text = "123456789";
    EXPECT_EQ(crc32c(0, text.data(), text.size()), 0xE3069283u);
    EXPECT_EQ(crc32c(crc32c(0, text.data(), 4), text.data() + 4, 5), 0xE3069283u);
}

} // namespace
