#include "RenderingBase/host/modeler/KVRModeler.h"
#include "RenderingBase/public/KVRRbaTextureLoader.h"
#include "tests/image/DerivedImages.h"
#include "tests/support/AddressSpace.h"
#include "tests/support/TempFolder.h"
#include "tests/texture/TextureFiles.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <stdexcept>

namespace rb::test {
namespace {

KVRRbaTextureLoader& loader() { return KVRRbaTextureLoader::GetInstance(); }

/// The image of a file; a refusal fails the test with its reason.
Image imported(const std::string& path) {
    TextureResult result;
    EXPECT_EQ(loader().ImportTexture(path, result), S_OK) << KVRLastImageError().Message();
    return Image::Adopt(result.GetPixelImage());
}

/// What call-backs were told.
struct Told {
    int successes = 0;
    std::vector<long> failures;
    TextureResult result;

    KVRRbaTextureLoader::OnSuccess onSuccess() {
        return [this](const TextureResult& given) {
            ++successes;
            result = given;
        };
    }
    KVRRbaTextureLoader::OnFailure onFailure() {
        return [this](long code) { failures.push_back(code); };
    }
};

TEST(TextureLoader, is_one_for_all) {
    KVRRbaTextureLoader* another = nullptr;
    onAnotherThread([&] { another = &KVRRbaTextureLoader::GetInstance(); });
    EXPECT_EQ(another, &loader());
}

TEST(TextureLoader, is_a_command_without_parent_and_name) {
    EXPECT_EQ(loader().GetParent(), nullptr);
    EXPECT_STREQ(loader().GetName(), "");
    EXPECT_STREQ(loader().IsA(), "KVRRbaTextureLoader");
    EXPECT_STREQ(KVRRbaTextureLoader::ClassId(), "KVRRbaTextureLoader");
    EXPECT_EQ(loader().IsAKindOf("KVRCommand"), 1);
    EXPECT_EQ(&loader().GetMetaObject(), &KVRRbaTextureLoader::MetaObject());
}

TEST(TextureLoader, is_known_to_the_modeler) {
    const auto component = KVRVar<KVRBaseUnknown>::Adopt(KVRModeler::Create("KVRRbaTextureLoader"));
    EXPECT_EQ(component.Get(), static_cast<KVRBaseUnknown*>(&loader()));
}

TEST(TextureLoader, outlives_requests_for_its_destruction) {
    loader().RequestDelayedDestruction();
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    loader().AddRef();
    EXPECT_EQ(loader().Release(), 1U);
    EXPECT_TRUE(imported(sampleFile("studio.bmp")));
}

TEST(TextureLoader, imports_an_image_with_the_pixels_of_the_file) {
    for (const char* name :
         {"studio.jpg", "alpha.png", "grey.tif", "studio.bmp", "alpha.tga", "sky.hdr",
          "sky-half.exr", "depth-float.exr", "studio.pic", "studio.rgb", "cmyk.psd"}) {
        const Image image = imported(sampleFile(name)), file = loadFile(sampleFile(name));
        ASSERT_TRUE(image);
        EXPECT_EQ(image->GetFormat(), file->GetFormat()) << name;
        EXPECT_EQ(rawPixels(image), rawPixels(file)) << name;
    }
}

TEST(TextureLoader, makes_no_texture_of_an_image) {
    TextureResult result;
    ASSERT_EQ(loader().ImportTexture(sampleFile("studio.bmp"), result), S_OK);
    EXPECT_FALSE(result.CreateVisuTexture() == result.CreateVisuTexture());
}

TEST(TextureLoader, imports_texture_files_through_the_visualisation) {
    const std::string texels = bytes({1, 2, 3, 4, 5, 6, 7, 8});
    const TempFolder folder;
    TextureResult result;
    ASSERT_EQ(loader().ImportTexture(folder.write("a.dds", rgbaDds(2, 1, texels).build()), result),
              S_OK);
    const Image image = Image::Adopt(result.GetPixelImage());
    EXPECT_EQ(bytesOf(image, 2, 1, Format::RGBA), (std::vector<int>{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(referencesOf(image), 2U);
    const IVisTexturePtr texture = result.CreateVisuTexture();
    ASSERT_TRUE(texture);
    EXPECT_TRUE(texture == result.CreateVisuTexture());
    EXPECT_EQ(texelsOf(texture, 8), texels);
    EXPECT_EQ(texture->GetDescription().levels, 2U) << "made, since the file has one only";
}

TEST(TextureLoader, gives_the_full_size_of_the_first_face) {
    TextureResult result;
    ASSERT_EQ(loader().ImportTexture(sampleFile("cube-mips.ktx2"), result), S_OK);
    const auto texture =
        KVRVar<KVRTexturePixelImage>::Adopt(CreateTextureFromFile(sampleFile("cube-mips.ktx2"), 1));
    EXPECT_EQ(rawPixels(Image::Adopt(result.GetPixelImage())), rawPixels(asImage(texture)));
    EXPECT_EQ(result.CreateVisuTexture()->GetDescription().faces, 6U);
}

TEST(TextureLoader, leaves_byte_orders_alone) {
    const Image image = imported(sampleFile("grating-mips.dds"));
    EXPECT_EQ(image->GetFormat(), Format::BGRA);
}

TEST(TextureLoader, refuses_an_empty_path_and_leaves_the_result) {
    const Image before = numbered(1, 1, Format::L);
    TextureResult result(before.Get());
    result.SetMetadata({72});
    EXPECT_EQ(loader().ImportTexture("", result), E_INVALIDARG);
    EXPECT_EQ(Image::Adopt(result.GetPixelImage()).Get(), before.Get());
    EXPECT_EQ(result.GetMetadata().xResolution, 72);
    Told told;
    EXPECT_EQ(loader().ImportTexture("", told.onSuccess(), told.onFailure()), E_INVALIDARG);
    EXPECT_EQ(told.successes, 0);
    EXPECT_TRUE(told.failures.empty());
}

TEST(TextureLoader, refuses_an_empty_call_back_for_success) {
    Told told;
    EXPECT_EQ(loader().ImportTexture(sampleFile("studio.bmp"), nullptr, told.onFailure()),
              E_INVALIDARG);
    EXPECT_TRUE(told.failures.empty());
}

TEST(TextureLoader, fails_for_what_nobody_reads) {
    const TempFolder folder;
    for (const std::string& path :
         {folder.file("missing.png"), folder.write("text.png", "no picture"),
          folder.path().string(), folder.write("cut.dds", rgbaDds(9, 9, "few").build())}) {
        TextureResult result;
        EXPECT_EQ(loader().ImportTexture(path, result), E_FAIL) << path;
        EXPECT_FALSE(result.IsValid());
        EXPECT_EQ(result.GetMetadata().xResolution, 0);
        EXPECT_FALSE(lastRefusal().empty());
    }
}

TEST(TextureLoader, fails_for_texels_that_no_image_has_and_says_so) {
    // BC6H: half channels, with which the visualisation can draw.
    const TempFolder folder;
    const std::string path = folder.write("hdr.dds", dx10(95, 4, std::string(64, '\0')).build());
    TextureResult result;
    EXPECT_EQ(loader().ImportTexture(path, result), E_FAIL);
    EXPECT_FALSE(result.IsValid());
    EXPECT_TRUE(result.CreateVisuTexture() == IVisTexturePtr::kNullPtr);
    EXPECT_EQ(lastRefusal(), ": expected texels of 8 bits, 16 bits or float, found RGB_f16");
}

TEST(TextureLoader, tells_lack_of_memory_from_an_unsuitable_format) {
    if (!kCanLimitMemory) GTEST_SKIP() << "memory cannot be made scarce under this sanitizer";
    // Room for the file's texels and no copy of them.
    constexpr std::uint32_t kSide = 5000;
    const TempFolder folder;
    const std::string path = folder.write("large.dds", rgbaDds(kSide, kSide, {}).build());
    std::filesystem::resize_file(path, 128 + std::uintmax_t{4} * kSide * kSide);
    const AddressSpaceLimit limit(std::size_t{150} << 20);
    TextureResult result;
    EXPECT_EQ(loader().ImportTexture(path, result), E_FAIL);
    EXPECT_NE(lastRefusal().find("expected enough memory"), std::string::npos) << lastRefusal();
}

TEST(TextureLoader, names_all_kinds_of_files_for_one_of_no_kind) {
    const TempFolder folder;
    TextureResult result;
    EXPECT_EQ(loader().ImportTexture(folder.write("a.txt", "text"), result), E_FAIL);
    const std::string refusal = lastRefusal();
    EXPECT_NE(refusal.find(" tga, dds or ktx2 file"), std::string::npos) << refusal;
    EXPECT_EQ(loader().ImportTexture("", result), E_INVALIDARG);
    EXPECT_EQ(lastRefusal(), ": expected the path of a file, found an empty one");
}

TEST(TextureLoader, logs_nothing_when_it_fails) {
    EXPECT_EQ(written([] {
                  TextureResult result;
                  loader().ImportTexture("nowhere.png", result);
              }),
              "");
}

TEST(TextureLoader, keeps_the_image_of_the_result_when_the_import_gives_none) {
    const TempFolder folder;
    TextureResult result;
    ASSERT_EQ(loader().ImportTexture(sampleFile("cube.dds"), result), S_OK);
    const Image before = Image::Adopt(result.GetPixelImage());
    result.SetMetadata({72});
    EXPECT_EQ(loader().ImportTexture(folder.file("missing.png"), result), S_OK);
    EXPECT_EQ(Image::Adopt(result.GetPixelImage()).Get(), before.Get());
    EXPECT_EQ(result.GetMetadata().xResolution, 0);
    // The texture is gone: a new one is made each time.
    EXPECT_FALSE(result.CreateVisuTexture() == result.CreateVisuTexture());
}

TEST(TextureLoader, replaces_image_texture_and_metadata) {
    TextureResult result;
    ASSERT_EQ(loader().ImportTexture(sampleFile("cube.dds"), result), S_OK);
    const Image before = Image::Adopt(result.GetPixelImage());
    ASSERT_EQ(loader().ImportTexture(sampleFile("studio.png"), result), S_OK);
    EXPECT_EQ(referencesOf(before), 1U);
    const Image after = Image::Adopt(result.GetPixelImage());
    EXPECT_EQ(rawPixels(after), rawPixels(loadFile(sampleFile("studio.png"))));
    EXPECT_EQ(referencesOf(after), 2U);
    EXPECT_FALSE(result.CreateVisuTexture() == result.CreateVisuTexture());
}

TEST(TextureLoader, tells_success_before_it_returns) {
    Told told;
    EXPECT_EQ(loader().ImportTexture(sampleFile("studio.png"), told.onSuccess(), told.onFailure()),
              S_OK);
    EXPECT_EQ(told.successes, 1);
    EXPECT_TRUE(told.failures.empty());
    ASSERT_TRUE(told.result.IsValid());
    EXPECT_EQ(referencesOf(Image::Adopt(told.result.GetPixelImage())), 2U);
    EXPECT_GT(told.result.GetMetadata().xResolution, 0);
}

TEST(TextureLoader, tells_texture_files_and_converted_images_as_well) {
    Told told;
    EXPECT_EQ(loader().ImportTexture(sampleFile("cube.dds"), told.onSuccess(), nullptr), S_OK);
    EXPECT_EQ(told.result.CreateVisuTexture()->GetDescription().faces, 6U);
    EXPECT_EQ(loader().ImportTexture(sampleFile("swapped.png"), told.onSuccess(), nullptr), S_OK);
    EXPECT_EQ(rawPixels(Image::Adopt(told.result.GetPixelImage())),
              rawPixels(imported(sampleFile("swapped.png"))));
    EXPECT_NE(rawPixels(Image::Adopt(told.result.GetPixelImage())),
              rawPixels(loadFile(sampleFile("swapped.png"))));
    EXPECT_EQ(told.successes, 2);
}

TEST(TextureLoader, tells_failure_when_there_is_a_call_back_for_it) {
    Told told;
    EXPECT_EQ(loader().ImportTexture("nowhere.png", told.onSuccess(), told.onFailure()), E_FAIL);
    EXPECT_EQ(told.successes, 0);
    EXPECT_EQ(told.failures, (std::vector<long>{E_FAIL}));
    EXPECT_EQ(loader().ImportTexture("nowhere.png", told.onSuccess(), nullptr), E_FAIL);
    EXPECT_EQ(told.successes, 0);
}

TEST(TextureLoader, passes_on_what_a_call_back_throws) {
    EXPECT_THROW(loader().ImportTexture(
                     sampleFile("studio.bmp"),
                     [](const TextureResult&) { throw std::runtime_error("no room"); }, nullptr),
                 std::runtime_error);
}

TEST(TextureLoader, is_never_asynchronous) {
    EXPECT_FALSE(loader().IsAsyncEnabled());
    loader().EnableAsync(true);
    EXPECT_FALSE(loader().IsAsyncEnabled());
    Told told;
    loader().ImportTexture(sampleFile("studio.bmp"), told.onSuccess(), told.onFailure());
    EXPECT_EQ(told.successes, 1);
    EXPECT_FALSE(loader().HasPendingCallbacks());
    loader().ProcessPendingCallbacks();
    EXPECT_EQ(told.successes, 1);
}

}  // namespace
}  // namespace rb::test
