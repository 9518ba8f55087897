#include "RenderingBase/host/app/KVRSettingRepository.h"
#include "RenderingBase/host/imaging/KVRPixelImage.h"
#include "RenderingBase/host/modeler/KVRVar.h"
#include "RenderingBase/public/KVRRbaImageServices.h"
#include "tests/support/LoadTimeEnvironment.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Services = KVRRbaImageServices;
using Characters = std::vector<std::string>;  // each a character in UTF-8

// Relative, so that every test has folders of its own; read when the library is loaded.
constexpr const char* kStartupPath = "first;;second";

std::string textOf(const KVRUnicodeString& text) { return std::string(text.View()); }

std::vector<std::string> textsOf(const KVRListValKVRUnicodeString& list) {
    std::vector<std::string> texts;
    for (const auto& item : list) texts.push_back(textOf(item));
    return texts;
}

std::vector<std::string> pieces(const std::string& text) {
    KVRListValKVRUnicodeString list;
    EXPECT_EQ(Services::ExtractPathList(KVRUnicodeString(text), list), 0);
    return textsOf(list);
}

std::string extensionOf(const std::string& path) {
    return textOf(Services::ReadExtension(KVRUnicodeString(path)));
}

struct Split {
    HRESULT status;
    std::string base, extension;
    bool operator==(const Split&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Split& split) {
    return stream << split.status << " <" << split.base << "> <" << split.extension << ">";
}

/// Splits with outputs that show whether they were touched.
Split split(const std::string& path) {
    KVRUnicodeString base("untouched"), extension("not cleared");
    const HRESULT status = Services::SplitPath(KVRUnicodeString(path), base, extension);
    return {status, textOf(base), textOf(extension)};
}

// --- Slow references, by other ways than scanning from the end -----------------------------------

std::string joined(const Characters& characters, std::size_t first, std::size_t end) {
    std::string text;
    for (std::size_t i = first; i < end; ++i) text += characters[i];
    return text;
}

std::vector<std::size_t> positionsOf(const Characters& text, const char* wanted) {
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == wanted) positions.push_back(i);
    }
    return positions;
}

/// The fields between the dots decide. A field is a version when a digit begins it.
std::string slowExtension(const Characters& path) {
    std::vector<std::string> fields(1);
    for (const std::string& character : path) {
        character == "." ? fields.emplace_back() : fields.back() += character;
    }
    if (path.size() < 2 || fields.size() < 2) return "";
    const bool hasVersion = fields.back().starts_with("3");
    return hasVersion && fields.size() > 2 ? fields[fields.size() - 2] : fields.back();
}

/// The last dot behind the last backslash cuts, or the one before it when it ends the path.
Split slowSplit(const Characters& path) {
    const std::size_t size = path.size();
    if (size == 0) return {E_FAIL, "untouched", ""};
    const auto backslashes = positionsOf(path, "\\");
    const std::size_t nameStart = backslashes.empty() ? 0 : backslashes.back() + 1;
    std::vector<std::size_t> dots;
    for (const std::size_t dot : positionsOf(path, ".")) {
        if (dot >= nameStart) dots.push_back(dot);
    }
    Split result{S_OK, "untouched", ""};
    std::size_t cut = dots.empty() ? size : dots.back();
    if (!dots.empty() && cut > 0) result.base = joined(path, 0, cut);
    if (cut + 1 == size && dots.size() > 1) {
        cut = dots[dots.size() - 2];
        if (cut > 0) result.base = joined(path, 0, cut);
    }
    if (!dots.empty()) result.extension = joined(path, cut + 1, size);
    if (!backslashes.empty()) result.base = joined(path, nameStart, cut);
    return result;
}

std::vector<std::string> slowPieces(const Characters& text) {
    std::istringstream stream(joined(text, 0, text.size()));
    std::vector<std::string> result;
    for (std::string piece; std::getline(stream, piece, ';');) result.push_back(piece);
    return result;
}

Characters randomText(std::mt19937& random) {
    static const Characters alphabet = {"a", ".", "\\", ";", "3", "é"};
    Characters text(std::uniform_int_distribution<std::size_t>(0, 12)(random));
    std::uniform_int_distribution<std::size_t> letter(0, alphabet.size() - 1);
    for (auto& character : text) character = alphabet[letter(random)];
    return text;
}

}  // namespace

TEST(ImagePathTexts, agree_with_slow_references_on_random_texts) {
    std::mt19937 random(20240229);
    for (int round = 0; round < 200000; ++round) {
        const Characters characters = randomText(random);
        const std::string text = joined(characters, 0, characters.size());
        ASSERT_EQ(extensionOf(text), slowExtension(characters)) << text;
        ASSERT_EQ(split(text), slowSplit(characters)) << text;
        ASSERT_EQ(pieces(text), slowPieces(characters)) << text;
    }
}

TEST(ReadExtension, is_what_follows_the_last_dot_in_its_own_case) {
    EXPECT_EQ(extensionOf("x.tga"), "tga");
    EXPECT_EQ(extensionOf("C:\\Été\\Oak.Wood.TIF"), "TIF");
    EXPECT_EQ(extensionOf(".png"), "png");
    EXPECT_EQ(extensionOf("x."), "");
    EXPECT_EQ(extensionOf("x.été"), "été");
}

TEST(ReadExtension, is_empty_without_a_dot_and_for_short_paths) {
    EXPECT_EQ(extensionOf(""), "");
    EXPECT_EQ(extensionOf("x"), "");
    EXPECT_EQ(extensionOf("."), "");
    EXPECT_EQ(extensionOf("é"), "");
    EXPECT_EQ(extensionOf("picture"), "");
}

TEST(ReadExtension, skips_one_version_number) {
    EXPECT_EQ(extensionOf("x.tga.12"), "tga");
    EXPECT_EQ(extensionOf("a.png.3"), "png");
    EXPECT_EQ(extensionOf("a.png.-3"), "png");
    EXPECT_EQ(extensionOf("a.png. 7"), "png");
    EXPECT_EQ(extensionOf("a.png.3.4"), "3");
    EXPECT_EQ(extensionOf("a..3"), "");
    EXPECT_EQ(extensionOf(".png.3"), "png");
}

TEST(ReadExtension, keeps_a_number_without_an_earlier_dot) {
    EXPECT_EQ(extensionOf("x.12"), "12");
    EXPECT_EQ(extensionOf(".3"), "3");
}

TEST(ReadExtension, takes_a_text_that_begins_with_a_number_for_a_version) {
    EXPECT_EQ(extensionOf("model.a.3ds"), "a");
    EXPECT_EQ(extensionOf("model.3ds"), "3ds");
    EXPECT_EQ(extensionOf("model.a.x3"), "x3");
}

TEST(ReadExtension, takes_dots_of_directories_too) {
    EXPECT_EQ(extensionOf("shop.old\\picture"), "old\\picture");
}

TEST(SplitPath, gives_name_and_extension) {
    EXPECT_EQ(split("C:\\shop\\oak.png"), (Split{S_OK, "oak", "png"}));
    EXPECT_EQ(split("oak.light.png"), (Split{S_OK, "oak.light", "png"}));
    EXPECT_EQ(split("é\\été.PNG"), (Split{S_OK, "été", "PNG"}));
}

TEST(SplitPath, fails_for_an_empty_path_and_clears_the_extension_only) {
    EXPECT_EQ(split(""), (Split{E_FAIL, "untouched", ""}));
}

TEST(SplitPath, never_sees_dots_of_directories) {
    EXPECT_EQ(split("shop.old\\oak"), (Split{S_OK, "oak", ""}));
    EXPECT_EQ(split("a.b\\.png"), (Split{S_OK, "", "png"}));
    EXPECT_EQ(split("a.b\\"), (Split{S_OK, "", ""}));
}

TEST(SplitPath, knows_only_the_backslash) {
    EXPECT_EQ(split("shop/oak.png"), (Split{S_OK, "shop/oak", "png"}));
    EXPECT_EQ(split("shop.old/oak"), (Split{S_OK, "shop", "old/oak"}));
}

TEST(SplitPath, leaves_the_base_without_dot_and_backslash_or_with_a_dot_in_front) {
    EXPECT_EQ(split("oak"), (Split{S_OK, "untouched", ""}));
    EXPECT_EQ(split(".png"), (Split{S_OK, "untouched", "png"}));
    EXPECT_EQ(split("."), (Split{S_OK, "untouched", ""}));
}

TEST(SplitPath, takes_an_earlier_dot_when_the_last_ends_the_path) {
    EXPECT_EQ(split("a.b."), (Split{S_OK, "a", "b."}));
    EXPECT_EQ(split("x\\a.b."), (Split{S_OK, "a", "b."}));
    EXPECT_EQ(split("a."), (Split{S_OK, "a", ""}));
    EXPECT_EQ(split(".a."), (Split{S_OK, ".a", "a."}));
    EXPECT_EQ(split("a.b\\c."), (Split{S_OK, "c", ""}));
}

TEST(SplitPath, may_write_to_its_input) {
    KVRUnicodeString path("shop\\oak.png"), extension;
    EXPECT_EQ(Services::SplitPath(path, path, extension), S_OK);
    EXPECT_EQ(textOf(path) + "|" + textOf(extension), "oak|png");
}

TEST(ExtractPathList, keeps_empty_pieces_but_not_an_empty_rest) {
    EXPECT_EQ(pieces("a;;b"), (std::vector<std::string>{"a", "", "b"}));
    EXPECT_EQ(pieces("a;"), (std::vector<std::string>{"a"}));
    EXPECT_EQ(pieces(";a"), (std::vector<std::string>{"", "a"}));
    EXPECT_EQ(pieces(";"), (std::vector<std::string>{""}));
    EXPECT_EQ(pieces(""), (std::vector<std::string>{}));
}

TEST(ExtractPathList, adds_nothing_for_the_bytes_beyond_the_characters) {
    EXPECT_EQ(pieces("é;"), (std::vector<std::string>{"é"}));
    EXPECT_EQ(pieces("été;ça\\là;éé"), (std::vector<std::string>{"été", "ça\\là", "éé"}));
}

TEST(ExtractPathList, appends_and_may_read_from_the_list) {
    KVRListValKVRUnicodeString list;
    list.Append("a;b;c;d;e;f;g;h");
    EXPECT_EQ(Services::ExtractPathList(list[1], list), 0);
    EXPECT_EQ(textsOf(list), (std::vector<std::string>{"a;b;c;d;e;f;g;h", "a", "b", "c", "d", "e",
                                                       "f", "g", "h"}));
}

// --- FindImageInPaths ----------------------------------------------------------------------------

namespace {

/// Stands in an empty folder, with repositories of its own.
class FindImage : public testing::Test {
protected:
    FindImage() : m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(m_folder.path());
        setenv("XDG_CONFIG_HOME", m_configuration.path().c_str(), 1);
    }
    ~FindImage() override { std::filesystem::current_path(m_before); }

    struct Answer {
        int status;
        std::string found;
        bool operator==(const Answer&) const = default;
        friend std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
            return stream << answer.status << " <" << answer.found << ">";
        }
    };
    static Answer find(int kind, const std::string& path) {
        KVRUnicodeString found("not cleared");
        const int status = Services::FindImageInPaths(kind, KVRUnicodeString(path), found, nullptr);
        return {status, textOf(found)};
    }

    void make(const std::string& file) const { m_folder.write(file, "content"); }

    /// The real path of a file in the folder, in the framework's form.
    std::string real(const std::string& file) const {
        std::string path = (std::filesystem::canonical(m_folder.path()) / file).string();
        std::replace(path.begin(), path.end(), '/', '\\');
        return path;
    }

    static void setCatalogPath(const std::string& directories) {
        const auto repository = KVRVar<KVRSettingRepository>::Adopt(
            KVRSettingRepository::CreateRepository("MaterialOptionsSettings"));
        ASSERT_TRUE(repository);
        ASSERT_EQ(repository->WriteSetting("CatalagPath", KVRUnicodeString(directories)), S_OK);
    }

    static inline const Answer kNotFound{-2, ""};
    static inline const Answer kRejected{-1, ""};

private:
    std::filesystem::path m_before;
    rb::test::TempFolder m_folder;
    rb::test::TempFolder m_configuration;
};

}  // namespace

TEST_F(FindImage, accepts_the_extensions_of_the_kind_and_no_others) {
    const std::vector<std::vector<std::string>> accepted = {
        {},
        {"tif", "rgb", "bmp", "jpg", "jpeg", "pic", "psd", "png", "tga", "exr", "dds", "hdr",
         "svg"},
        {"fx", "cgfx"},
        {"rgb", "bw", "dds"},
        {"ies", "txt"},
        {},
    };
    const Characters extensions = {"tif", "rgb", "bmp", "jpg",  "jpeg", "pic",  "psd", "png",
                                   "tga", "exr", "dds", "hdr",  "svg",  "fx",   "bw",  "cgfx",
                                   "ies", "txt", "gif", "tiff", "ktx2", "webp", "sgi", "x"};
    for (const auto& extension : extensions) {
        make("x." + extension);
        std::string upper = "X." + extension;
        std::transform(upper.begin(), upper.end(), upper.begin(), toupper);
        make(upper);
        for (std::size_t kind = 0; kind < accepted.size(); ++kind) {
            const bool fits = std::count(accepted[kind].begin(), accepted[kind].end(), extension);
            for (const std::string& name : {"x." + extension, upper}) {
                EXPECT_EQ(find(static_cast<int>(kind), name),
                          fits ? Answer({0, real(name)}) : kRejected)
                    << kind << " " << name;
            }
        }
    }
    EXPECT_EQ(find(-1, "x.png"), kRejected);
}

TEST_F(FindImage, rejects_before_it_looks_for_the_file) {
    EXPECT_EQ(find(4, "missing.TIF"), kRejected);
    EXPECT_EQ(find(1, "missing.TIF"), kNotFound);
    make("plain");
    EXPECT_EQ(find(1, "plain"), kRejected);
}

TEST_F(FindImage, takes_the_extension_before_a_version_number) {
    make("x.png.3");
    EXPECT_EQ(find(1, "x.png.3"), (Answer{0, real("x.png.3")}));
}

TEST_F(FindImage, has_no_answer_to_an_empty_path_and_to_a_loop_of_links) {
    EXPECT_EQ(find(1, ""), kNotFound);
    std::filesystem::create_symlink("b.png", "a.png");
    std::filesystem::create_symlink("a.png", "b.png");
    EXPECT_EQ(find(1, "a.png"), kNotFound);
    EXPECT_EQ(find(9, "a.png"), kNotFound);
}

TEST_F(FindImage, follows_links_and_judges_what_they_lead_to) {
    make("real/oak.png");
    make("real/oak.gif");
    std::filesystem::create_directory_symlink("real", "folder");
    std::filesystem::create_symlink("real/oak.png", "looks-like.txt");
    std::filesystem::create_symlink("real/oak.gif", "looks-like.png");
    EXPECT_EQ(find(1, "folder\\oak.png"), (Answer{0, real("real/oak.png")}));
    EXPECT_EQ(find(1, "looks-like.txt"), (Answer{0, real("real/oak.png")}));
    EXPECT_EQ(find(1, "looks-like.png"), kRejected);
    EXPECT_EQ(find(1, "real\\..\\folder\\.\\oak.png"), (Answer{0, real("real/oak.png")}));
}

TEST_F(FindImage, searches_for_the_name_that_a_link_to_nothing_leads_to) {
    make("catalog/oak.png");
    setCatalogPath("catalog");
    std::filesystem::create_symlink("gone/oak.png", "link.gif");
    EXPECT_EQ(find(1, "link.gif"), (Answer{0, "catalog\\oak.png"}));
}

TEST_F(FindImage, takes_no_notice_of_the_document) {
    make("oak.png");
    KVRUnicodeString found;
    const auto document =
        KVRVar<KVRBaseUnknown>::Adopt(new KVRPixelImage(1, 1, KVRPixelImageFormat::L));
    EXPECT_EQ(KVRRbaImageServices::FindImageInPaths(1, "oak.png", found, document.Get()), 0);
}

TEST_F(FindImage, finds_a_relative_an_absolute_and_a_non_ascii_path) {
    make("été/chêne.png");
    EXPECT_EQ(find(1, "été\\chêne.png"), (Answer{0, real("été/chêne.png")}));
    EXPECT_EQ(find(1, real("été/chêne.png")), (Answer{0, real("été/chêne.png")}));
}

TEST_F(FindImage, searches_the_file_itself_then_catalogs_then_places_below_the_startup_path) {
    setCatalogPath("catalog;;other");
    // Every place, in the order of the search: all directories of one place before the next place.
    std::vector<std::string> places = {"catalog/", "other/"};
    for (const char* place : {"materials/", "materials/shaders/", "materials/shaders/textures/",
                              "materials/shaders/metaSL/textures/", "stickers/"}) {
        places.push_back(std::string("first/") + place);
        places.push_back(std::string("second/") + place);
    }
    make("old/oak.png");
    for (const auto& place : places) make(place + "oak.png");

    EXPECT_EQ(find(1, "old\\oak.png"), (Answer{0, real("old/oak.png")}));
    std::filesystem::remove("old/oak.png");
    for (const auto& place : places) {
        std::string expected = place + "oak.png";
        std::replace(expected.begin(), expected.end(), '/', '\\');
        EXPECT_EQ(find(1, "old\\oak.png"), (Answer{0, expected}));
        std::filesystem::remove(place + "oak.png");
    }
    EXPECT_EQ(find(1, "old\\oak.png"), kNotFound);
}

TEST_F(FindImage, searches_the_file_name_alone) {
    make("first/materials/old/oak.png");
    make("first/stickers/deep/oak.png");
    EXPECT_EQ(find(1, "old\\oak.png"), kNotFound);
    make("second/stickers/oak.png");
    EXPECT_EQ(find(1, "old\\oak.png"), (Answer{0, "second\\stickers\\oak.png"}));
    EXPECT_EQ(find(1, "C:\\shop\\old\\oak.png"), (Answer{0, "second\\stickers\\oak.png"}));
    EXPECT_EQ(find(1, "/nowhere/old/oak.png"), (Answer{0, "second\\stickers\\oak.png"}));
}

TEST_F(FindImage, does_not_search_the_startup_directories_themselves) {
    make("first/oak.png");
    make("first/shaders/oak.png");
    make("first/materials/shaders/metaSL/oak.png");
    EXPECT_EQ(find(1, "old\\oak.png"), kNotFound);
}

TEST_F(FindImage, goes_on_without_the_catalog_setting_or_with_an_empty_one) {
    make("first/materials/oak.png");
    make("oak/oak.png");
    const Answer inMaterials{0, "first\\materials\\oak.png"};
    EXPECT_EQ(find(1, "old\\oak.png"), inMaterials);
    const auto repository = KVRVar<KVRSettingRepository>::Adopt(
        KVRSettingRepository::CreateRepository("MaterialOptionsSettings"));
    ASSERT_TRUE(repository);
    EXPECT_EQ(repository->WriteSetting("CatalogPath", "oak"), S_OK);
    EXPECT_EQ(find(1, "old\\oak.png"), inMaterials);
    setCatalogPath("");
    EXPECT_EQ(find(1, "old\\oak.png"), inMaterials);
    setCatalogPath("missing");
    EXPECT_EQ(find(1, "old\\oak.png"), inMaterials);
    setCatalogPath("oak");
    EXPECT_EQ(find(1, "old\\oak.png"), (Answer{0, "oak\\oak.png"}));
}

TEST_F(FindImage, may_write_to_its_input) {
    make("oak.png");
    KVRUnicodeString path("oak.png");
    EXPECT_EQ(Services::FindImageInPaths(1, path, path, nullptr), 0);
    EXPECT_EQ(textOf(path), real("oak.png"));
}

TEST_F(FindImage, finds_by_the_name_behind_the_last_backslash_of_random_paths) {
    std::mt19937 random(19991231);
    make("first/materials/a.png");
    const Answer inMaterials{0, "first\\materials\\a.png"};
    for (int round = 0; round < 2000; ++round) {
        const Characters characters = randomText(random);
        const std::string path = joined(characters, 0, characters.size()) + ".png";
        const std::string name = path.substr(path.rfind('\\') + 1);
        EXPECT_EQ(find(1, path), name == "a.png" ? inMaterials : kNotFound) << path;
        EXPECT_EQ(find(0, path), kRejected) << path;
    }
}

int main(int argc, char** argv) {
    rb::test::ensureLoadTimeEnvironment(argv, {{"KVRStartupPath", kStartupPath}});
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
