#include "RenderingBase/host/files/KVRPath.h"
#include "RenderingBase/host/files/ZWTSysPath.h"
#include "tests/host/ChildProcess.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <utility>

namespace fs = std::filesystem;
using rb::test::TempFolder;

namespace {

std::pair<std::string, std::string> split(const char* path) {
    KVRUnicodeString directory("old"), name("old");
    KVRSplitPath(path, directory, name);
    return {directory.CastToCharPtr(), name.CastToCharPtr()};
}

std::string nativeRealPath(const std::string& native) {
    return NativePath(KVRGetRealPath(FrameworkPath(native)));
}

}  // namespace

TEST(NativePath, has_the_systems_separator_and_no_long_path_prefix) {
    EXPECT_EQ(NativePath(R"(C:\textures/été\a b.png)"), "C:/textures/été/a b.png");
    EXPECT_EQ(NativePath(R"(\\?\C:\x)"), "C:/x");
    EXPECT_EQ(NativePath(R"(\\server\share)"), "//server/share");
    EXPECT_EQ(NativePath(R"(a\\?\b)"), "a//?/b");  // no prefix elsewhere
    EXPECT_EQ(NativePath(""), "");
}

TEST(FrameworkPath, has_backslashes) {
    EXPECT_EQ(FrameworkPath("/usr/share/été.png"), KVRUnicodeString(R"(\usr\share\été.png)"));
    EXPECT_EQ(FrameworkPath(""), KVRUnicodeString());
    EXPECT_EQ(NativePath(FrameworkPath("/a/b.c/d")), "/a/b.c/d");
}

TEST(KVRSplitPath, splits_at_the_last_separator_of_either_kind) {
    using Parts = std::pair<std::string, std::string>;
    EXPECT_EQ(split(R"(C:\a\b.png)"), (Parts{R"(C:\a)", "b.png"}));
    EXPECT_EQ(split(R"(C:\a/b.png)"), (Parts{R"(C:\a)", "b.png"}));
    EXPECT_EQ(split(R"(a/é\b.png)"), (Parts{"a/é", "b.png"}));
    EXPECT_EQ(split("b.png"), (Parts{"", "b.png"}));
    EXPECT_EQ(split(R"(a\)"), (Parts{"a", ""}));
    EXPECT_EQ(split("/b"), (Parts{"/", "b"}));
    EXPECT_EQ(split(R"(\)"), (Parts{R"(\)", ""}));
    EXPECT_EQ(split(""), (Parts{"", ""}));
}

TEST(KVRSplitPath, output_may_be_the_input) {
    KVRUnicodeString path(R"(a\b\c)"), name;
    KVRSplitPath(path, path, name);
    EXPECT_EQ(path, KVRUnicodeString(R"(a\b)"));
    EXPECT_EQ(name, KVRUnicodeString("c"));
    KVRSplitPath(path, name, path);
    EXPECT_EQ(name, KVRUnicodeString("a"));
    EXPECT_EQ(path, KVRUnicodeString("b"));
}

TEST(KVRGetRealPath, resolves_links_and_dots) {
    const TempFolder folder;
    const std::string root = fs::canonical(folder.path()).string();
    folder.write("a/file.png");
    fs::create_directory_symlink(folder.path() / "a", folder.path() / "link");
    fs::create_symlink("file.png", folder.path() / "a/other.png");
    EXPECT_EQ(nativeRealPath(root + "/link/../a/./other.png"), root + "/a/file.png");
    EXPECT_EQ(nativeRealPath(root + "/link"), root + "/a");
    EXPECT_EQ(nativeRealPath(root + "/link/"), root + "/a");
    EXPECT_EQ(nativeRealPath("/"), "/");
}

TEST(KVRGetRealPath, takes_both_separators_and_gives_backslashes) {
    const TempFolder folder;
    folder.write("a/file.png");
    const KVRUnicodeString root = FrameworkPath(fs::canonical(folder.path()).native());
    EXPECT_EQ(KVRGetRealPath(root + "\\a/..\\a/file.png"), root + "\\a\\file.png");
    EXPECT_EQ(KVRGetRealPath("\\\\?\\" + root + "\\a"), root + "\\a");
}

TEST(KVRGetRealPath, works_for_what_does_not_exist) {
    const TempFolder folder;
    const std::string root = fs::canonical(folder.path()).string();
    folder.write("file.png");
    fs::create_symlink("no/../nowhere", folder.path() / "dangling");
    fs::create_symlink("dangling", folder.path() / "twice");
    EXPECT_EQ(nativeRealPath(root + "/no/such/../file.png"), root + "/no/file.png");
    EXPECT_EQ(nativeRealPath(root + "/no/such/"), root + "/no/such");
    EXPECT_EQ(nativeRealPath(root + "/file.png/below"), root + "/file.png/below");
    EXPECT_EQ(nativeRealPath(root + "/dangling"), root + "/nowhere");
    EXPECT_EQ(nativeRealPath(root + "/twice"), root + "/nowhere");
    const std::string here = fs::canonical(fs::current_path()).string();
    EXPECT_EQ(nativeRealPath("rb-no-such-file.png"), here + "/rb-no-such-file.png");
    const std::string longName(5000, 'x');
    EXPECT_EQ(nativeRealPath(root + "/" + longName), root + "/" + longName);
}

TEST(KVRGetRealPath, is_empty_for_nothing_and_for_a_loop_of_links) {
    const TempFolder folder;
    fs::create_symlink("b", folder.path() / "a");
    fs::create_symlink("a", folder.path() / "b");
    EXPECT_EQ(KVRGetRealPath(""), KVRUnicodeString());
    EXPECT_EQ(nativeRealPath(folder.file("a")), "");
    EXPECT_EQ(nativeRealPath(folder.file("a/file.png")), "");
}

TEST(KVRGetRealPath, resolves_by_text_what_it_may_not_look_at) {
    const TempFolder folder;
    fs::permissions(folder.path(), fs::perms::owner_exec | fs::perms::others_exec);
    fs::create_directory(folder.path() / "closed");
    fs::permissions(folder.path() / "closed", fs::perms::none);
    const std::string file = fs::canonical(folder.path()).string() + "/closed/a.png";
    EXPECT_EQ(rb::test::asOrdinaryUser([&] { return nativeRealPath(file) == file ? 0 : 1; }), 0);
    fs::permissions(folder.path(), fs::perms::owner_all);
}

TEST(KVRFindPath, takes_the_first_folder_that_has_it) {
    const TempFolder folder;
    folder.write("one/x.png");
    folder.write("two/sub/y.png");
    folder.write("three/sub/y.png");
    const std::string list = ";" + folder.file("one") + ";;" + folder.file("missing") + ";" +
                             folder.file("two") + ";" + folder.file("three") + ";";
    KVRUnicodeString found("old");
    EXPECT_TRUE(KVRFindPath(R"(sub\y.png)", list.c_str(), found));
    EXPECT_EQ(found, KVRUnicodeString(folder.file("two") + R"(\sub\y.png)"));
    EXPECT_TRUE(KVRFindPath("x.png", list.c_str(), found));
    EXPECT_EQ(found, KVRUnicodeString(folder.file("one") + R"(\x.png)"));
    EXPECT_TRUE(KVRFindPath("sub", list.c_str(), found));  // a folder is found too
}

TEST(KVRFindPath, clears_the_output_when_nothing_is_found) {
    const TempFolder folder;
    const std::string list = folder.path().string();
    for (const auto& [relative, folders] :
         {std::pair<const char*, const char*>{"x.png", list.c_str()},
          {"x.png", ""},
          {"x.png", ";;"},
          {"x.png", nullptr},
          {"", list.c_str()},
          {"\xFF", list.c_str()}}) {
        KVRUnicodeString found("old");
        EXPECT_FALSE(KVRFindPath(relative, folders, found));
        EXPECT_EQ(found, KVRUnicodeString());
    }
    fs::create_symlink("nowhere", folder.path() / "dangling");
    KVRUnicodeString found;
    EXPECT_FALSE(KVRFindPath("dangling", list.c_str(), found));
}

TEST(KVRFindPath, absolute_path_needs_no_list) {
    const TempFolder folder;
    const KVRUnicodeString file = FrameworkPath(folder.write("x.png"));
    KVRUnicodeString found;
    EXPECT_TRUE(KVRFindPath(file, nullptr, found));
    EXPECT_EQ(found, file);
    EXPECT_FALSE(KVRFindPath(file + "2", folder.path().c_str(), found));
    found = "x.png";  // the output may be the input
    EXPECT_TRUE(KVRFindPath(found, folder.path().c_str(), found));
    EXPECT_EQ(found, KVRUnicodeString(folder.path().string() + "\\x.png"));
}

TEST(KVRFindPath, narrow_form_gives_a_string_of_the_callers) {
    const TempFolder folder;
    folder.write("é.png");
    const std::unique_ptr<char[]> found(KVRFindPath("é.png", folder.path().c_str()));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(std::string(found.get()), folder.path().string() + "\\é.png");
    EXPECT_EQ(KVRFindPath("no.png", folder.path().c_str()), nullptr);
    EXPECT_EQ(KVRFindPath(static_cast<const char*>(nullptr), folder.path().c_str()), nullptr);
}

TEST(ZWTSysPath, keeps_its_text_and_looks_without_the_prefix) {
    const TempFolder folder;
    const std::string text = "\\\\?\\" + folder.write("a.png");
    ZWTSysPath path{KVRUnicodeString(text)};
    EXPECT_TRUE(path.Exists());
    EXPECT_EQ(path.ToString(), KVRUnicodeString(text));
    ZWTSysPath copy(path);
    copy.Set("rb-no-such-file");
    EXPECT_FALSE(copy.Exists());
    EXPECT_TRUE(path.Exists());
    copy.Set(folder.path().c_str());
    EXPECT_TRUE(copy.Exists());
    copy.Set(nullptr);
    EXPECT_EQ(copy.ToString(), KVRUnicodeString());
    EXPECT_FALSE(copy.Exists());
    EXPECT_FALSE(ZWTSysPath().Exists());
}
