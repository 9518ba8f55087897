#include "RenderingBase/public/KVRRbaTextureResult.h"
#include "tests/image/DerivedImages.h"
#include "tests/texture/TextureFiles.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <type_traits>

namespace rb::test {
namespace {

/// A texture of any code and size, as another visualisation may have; texels count upwards.
class AnyTexture : public KVRClass<"AnyTexture", IVisTexture> {
public:
    AnyTexture(int code, unsigned width, unsigned height)
        : m_code(code), m_width(width), m_height(height) {}

    Description GetDescription() const override { return {m_width, m_height, 1, 1}; }
    IVisTextureFormat::Type GetFormat() const override {
        return static_cast<IVisTextureFormat::Type>(m_code);
    }
    unsigned char* ReadPixels(unsigned, unsigned) const override {
        return counted<unsigned char>(8);  // of RGBA16, the largest
    }
    float* ReadFloatPixels(unsigned, unsigned) const override { return counted<float>(4); }

private:
    template <class Value>
    Value* counted(std::size_t mostOfATexel) const {
        const std::size_t count = mostOfATexel * m_width * m_height;
        auto* const values = new Value[count];
        for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<Value>(i);
        return values;
    }

    int m_code;
    unsigned m_width, m_height;
};

IVisTexturePtr anyTexture(int code, unsigned width = 2, unsigned height = 3) {
    return IVisTexturePtr::Adopt(new AnyTexture(code, width, height));
}

unsigned referencesOf(const IVisTexturePtr& texture) {
    texture->AddRef();
    return texture->Release();
}

Image imageIn(const TextureResult& result) { return Image::Adopt(result.GetPixelImage()); }

TEST(TextureResult, is_empty_at_first) {
    const TextureResult result;
    EXPECT_FALSE(result.IsValid());
    EXPECT_EQ(result.GetPixelImage(), nullptr);
    EXPECT_EQ(result.GetMetadata().xResolution, 0);
    EXPECT_TRUE(result.CreateVisuTexture() == IVisTexturePtr::kNullPtr);
}

TEST(TextureResult, of_an_image_shares_it) {
    const Image image = numbered(2, 2, Format::RGB);
    {
        const TextureResult result(image.Get());
        EXPECT_TRUE(result.IsValid());
        EXPECT_EQ(result.GetMetadata().xResolution, 0);
        EXPECT_EQ(rb::test::referencesOf(image), 2U);
    }
    EXPECT_EQ(rb::test::referencesOf(image), 1U);
    EXPECT_FALSE(TextureResult(static_cast<KVRPixelImage*>(nullptr)).IsValid());
}

TEST(TextureResult, takes_a_reference_with_every_GetPixelImage) {
    const Image image = numbered(2, 2, Format::RGB);
    const TextureResult result(image.Get());
    KVRPixelImage* const first = result.GetPixelImage();
    KVRPixelImage* const second = result.GetPixelImage();
    EXPECT_EQ(first, image.Get());
    EXPECT_EQ(second, image.Get());
    EXPECT_EQ(rb::test::referencesOf(image), 4U);
    first->Release();
    second->Release();
    EXPECT_EQ(rb::test::referencesOf(image), 2U);
}

TEST(TextureResult, copies_share_image_and_texture) {
    const Image image = numbered(2, 2, Format::RGB);
    const IVisTexturePtr texture = anyTexture(IVisTextureFormat::RGB);
    {
        TextureResult first(image.Get());
        first.SetMetadata({300});
        TextureResult second = first;
        EXPECT_EQ(second.GetMetadata().xResolution, 300);
        EXPECT_EQ(rb::test::referencesOf(image), 3U);
        const TextureResult third(texture);
        EXPECT_EQ(referencesOf(texture), 2U);
        second = third;
        EXPECT_EQ(rb::test::referencesOf(image), 2U);
        EXPECT_EQ(referencesOf(texture), 3U);
        EXPECT_EQ(second.GetMetadata().xResolution, 0);
        EXPECT_EQ(imageIn(second).Get(), imageIn(third).Get());
    }
    EXPECT_EQ(rb::test::referencesOf(image), 1U);
    EXPECT_EQ(referencesOf(texture), 1U);
}

TEST(TextureResult, reads_the_texels_of_a_texture_whose_format_images_have) {
    const std::map<int, Format> formats{
        {1, Format::L},      {2, Format::LA},      {3, Format::RGB},    {4, Format::RGBA},
        {6, Format::RGB_16}, {7, Format::RGBA_16}, {9, Format::BGRA},   {10, Format::ARGB},
        {11, Format::ABGR},  {18, Format::L_f},    {19, Format::RGB_f}, {20, Format::RGBA_f}};
    for (int code = -1; code < 40; ++code) {
        const IVisTexturePtr texture = anyTexture(code);
        const TextureResult result(texture);
        const auto expected = formats.find(code);
        ASSERT_EQ(result.IsValid(), expected != formats.end()) << code;
        // The texture stays, whether there is an image or not.
        EXPECT_TRUE(result.CreateVisuTexture() == texture);
        if (expected == formats.end()) continue;
        const Image image = imageIn(result);
        int width = 0, height = 0;
        image->GetSize(width, height);
        EXPECT_EQ(width, 2);
        EXPECT_EQ(height, 3);
        EXPECT_EQ(image->GetFormat(), expected->second);
        if (const float* const floats = image->GetFloatingPixelsToRead()) {
            EXPECT_EQ(floats[5], 5.0F) << code;
        } else {
            EXPECT_EQ(rawPixels(image).substr(0, 6), bytes({0, 1, 2, 3, 4, 5})) << code;
        }
    }
}

TEST(TextureResult, has_no_image_of_a_texture_without_texels) {
    EXPECT_FALSE(TextureResult(anyTexture(3, 0, 3)).IsValid());
    EXPECT_FALSE(TextureResult(anyTexture(3, 2, 0)).IsValid());
    const TextureResult result(IVisTexturePtr::kNullPtr);
    EXPECT_FALSE(result.IsValid());
    EXPECT_TRUE(result.CreateVisuTexture() == IVisTexturePtr::kNullPtr);
}

/// As without memory, or on a lost device.
class UnreadableTexture : public KVRClass<"UnreadableTexture", IVisTexture> {
public:
    Description GetDescription() const override { return {2, 3, 1, 1}; }
    IVisTextureFormat::Type GetFormat() const override { return IVisTextureFormat::RGB_f; }
    unsigned char* ReadPixels(unsigned, unsigned) const override { return nullptr; }
    float* ReadFloatPixels(unsigned, unsigned) const override { return nullptr; }
};

TEST(TextureResult, has_no_image_of_texels_that_cannot_be_read_back) {
    const TextureResult result(IVisTexturePtr::Adopt(new UnreadableTexture));
    EXPECT_FALSE(result.IsValid());
    EXPECT_TRUE(result.CreateVisuTexture());
}

TEST(TextureResult, has_an_image_that_outlives_the_texture) {
    Image image;
    {
        const TextureResult result(VisTextureFactory::CreateTexture(
            imageOf<std::uint8_t>(2, 1, Format::L, {7, 9}).Get(), true, true));
        image = imageIn(result);
    }
    EXPECT_EQ(bytesOf(image, 2, 1, Format::L), (std::vector<int>{7, 9}));
    EXPECT_EQ(rb::test::referencesOf(image), 1U);
}

TEST(TextureResult, has_no_image_of_a_texture_that_cannot_be_read_here) {
    const IVisTexturePtr texture =
        VisTextureFactory::CreateTexture(numbered(2, 2, Format::RGB).Get(), true, true);
    onAnotherThread([&] { EXPECT_FALSE(TextureResult(texture).IsValid()); });
}

TEST(TextureResult, makes_a_texture_of_its_image_each_time) {
    const Image image = numbered(4, 2, Format::RGB);
    const TextureResult result(image.Get());
    const IVisTexturePtr first = result.CreateVisuTexture(), second = result.CreateVisuTexture();
    ASSERT_TRUE(first);
    ASSERT_TRUE(second);
    EXPECT_FALSE(first == second);
    EXPECT_EQ(referencesOf(first), 1U) << "the result keeps none";
    EXPECT_EQ(first->GetDescription().levels, 3U);
    EXPECT_EQ(texelsOf(first, 24), rawPixels(image));
}

static_assert(std::is_nothrow_destructible_v<TextureResult>);

}  // namespace
}  // namespace rb::test
