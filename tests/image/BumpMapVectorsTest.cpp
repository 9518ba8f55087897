// Normal maps in vectors against the plain version, byte by byte, for every kind of processor.

#include "RenderingBase/KVRRbaModel.m/src/kernels/plain/BumpMap.h"
#include "tests/image/VectorTargets.h"

namespace rb::test {
namespace {

using Values = std::vector<std::uint8_t>;

enum class Content {
    Random,
    BlackAndWhite,  ///< The steepest slopes.
    /// Multiples of 51, a fifteenth of the largest sum: many slopes have a norm that is a rational
    /// number, and a z that ends exactly on a byte, such as slopes of 510/765 and 0.
    Fifths,
    Grey,  ///< Channels alike.
    AlmostLevel,
    Level,
};
constexpr Content kContents[] = {Content::Random, Content::Fifths,      Content::BlackAndWhite,
                                 Content::Grey,   Content::AlmostLevel, Content::Level};

Values picture(std::size_t pixels, Content content, std::mt19937& random) {
    Values values = randomBytes(3 * pixels, random);
    for (std::size_t i = 0; i < values.size(); ++i) {
        std::uint8_t& value = values[i];
        if (content == Content::BlackAndWhite) value = value % 2 ? 255 : 0;
        if (content == Content::Fifths) value = static_cast<std::uint8_t>(51 * (value % 6));
        if (content == Content::Grey) value = values[i - i % 3];
        if (content == Content::AlmostLevel) value = static_cast<std::uint8_t>(127 + value % 3);
        if (content == Content::Level) value = 200;
    }
    return values;
}

void expectPlain(const Values& rgb, std::size_t width, std::size_t sourceDistance,
                 std::size_t targetDistance) {
    SCOPED_TRACE(testing::Message() << width << " wide, " << rgb.size() << " bytes");
    Values expected(rgb.size());
    kernels::plain::renderBumpMap(rgb, width, expected);
    WatchedBytes source(rgb.size(), sourceDistance), target(rgb.size(), targetDistance);
    source.fill(rgb);
    kernels::renderBumpMap(source.bytes(), width, target.bytes());
    ASSERT_EQ(target.values(), expected);
    ASSERT_TRUE(target.surroundingsStayed());
}

}  // namespace

TEST(BumpMapVectors, every_width_and_height_is_plain) {
    forEachTarget([] {
        std::mt19937 random(51);
        for (const Content content : kContents)
            for (const std::size_t height : {0U, 1U, 2U, 3U, 4U, 7U})
                for (std::size_t width = 0; width <= 67; ++width) {
                    expectPlain(picture(width * height, content, random), width, random() % 64,
                                random() % 64);
                    if (testing::Test::HasFatalFailure()) return;
                }
    });
}

TEST(BumpMapVectors, wide_pictures_are_plain) {
    forEachTarget([] {
        std::mt19937 random(52);
        for (const Content content : kContents)
            for (const std::size_t width : {127U, 128U, 129U, 130U, 131U, 194U, 1021U}) {
                expectPlain(picture(width * 40, content, random), width, 0, 0);
                if (testing::Test::HasFatalFailure()) return;
            }
    });
}

TEST(BumpMapVectors, memory_is_read_within_the_picture_only) {
    // Exactly as large as it is, for a sanitizer to see.
    std::mt19937 random(53);
    forEachTarget([&] {
        for (const std::size_t width : {66U, 67U, 130U})
            for (const std::size_t height : {1U, 2U, 3U}) {
                const Values rgb = picture(width * height, Content::Random, random);
                Values expected(rgb.size()), map(rgb.size());
                kernels::plain::renderBumpMap(rgb, width, expected);
                kernels::renderBumpMap(rgb, width, map);
                ASSERT_EQ(map, expected);
            }
    });
}

}  // namespace rb::test
