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

TEST_P(Crc32cTest, agreesWithTheDefinitionForAllLengthsAlignmentsAndSplits)
{
    const std::vector<unsigned char> source = randomBytes(200'000, 11);
    std::mt19937 generator(13);
    for (std::size_t round = 0; round < 8 * 1024 + 40; ++round) {
        const std::size_t size = round < 8 * 1024 ? round % 1024 : generator() % source.size();
        const std::size_t alignment = generator() % 16;
        // Ends with its allocation, so that AddressSanitizer sees a read beyond.
        std::vector<unsigned char> bytes(alignment + size);
        std::copy_n(source.begin(), size, bytes.begin() + static_cast<std::ptrdiff_t>(alignment));
        const unsigned char* const data = bytes.data() + alignment;
        const std::size_t split = generator() % (size + 1);
        ASSERT_EQ(crc(crc(0xC0FFEE, data, split), data + split, size - split), bitByBit(0xC0FFEE, data, size))
            << "size " << size << ", alignment " << alignment << ", split at " << split;
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
