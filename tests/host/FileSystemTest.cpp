#include "RenderingBase/host/files/KVRFileSystem.h"
#include "RenderingBase/host/files/KVRPath.h"
#include "tests/host/ChildProcess.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <limits>
#include <string>
#include <sys/stat.h>
#include <sys/time.h>
#include <vector>

namespace fs = std::filesystem;
using rb::test::asOrdinaryUser;
using rb::test::TempFolder;

namespace {

std::vector<std::string> sortedNames(const KVRListValKVRUnicodeString& list) {
    std::vector<std::string> names;
    for (const auto& name : list) names.emplace_back(name.View());
    std::sort(names.begin(), names.end());
    return names;
}

void setModificationTime(const std::string& file, long seconds) {
    const timeval times[2] = {{seconds, 0}, {seconds, 999999}};
    ASSERT_EQ(utimes(file.c_str(), times), 0);
}

// Names that no system call takes, and paths that lead nowhere.
std::vector<KVRUnicodeString> impossiblePaths(const TempFolder& folder) {
    fs::create_symlink("loop", folder.path() / "loop");
    folder.write("plain", "x");
    return {"",
            KVRUnicodeString(folder.file(std::string(300, 'x'))),
            KVRUnicodeString(std::string(100000, 'a')),
            KVRUnicodeString(folder.file("loop")),
            KVRUnicodeString(folder.file("plain/below")),
            KVRUnicodeString(folder.file("missing/below")),
            KVRUnicodeString(std::string("\0", 1))};
}

}  // namespace

TEST(KVRFileSystem, impossible_paths_fail_and_nothing_throws) {
    const TempFolder folder;
    for (const auto& path : impossiblePaths(folder)) {
        KVRFileInfo info;
        KVRFileStatus status;
        KVRListValKVRUnicodeString names;
        EXPECT_EQ(KVRGetFileInfo(path, &info), E_FAIL) << path.SubString(0, 200);
        EXPECT_EQ(KVRFileStat(path, status), E_FAIL);
        EXPECT_EQ(KVRListDirectory(path, names), E_FAIL);
        EXPECT_EQ(KVRFileAccess(path, 0), E_FAIL);
    }
}

TEST(KVRGetFileInfo, tells_size_time_and_kind) {
    const TempFolder folder;
    const std::string file = folder.write("été/a.bin", "12345");
    setModificationTime(file, 1000000007);
    KVRFileInfo info;
    ASSERT_EQ(KVRGetFileInfo(FrameworkPath(file), &info), S_OK);
    EXPECT_EQ(info.size, 5);
    EXPECT_EQ(info.modificationTime, 1000000007);
    EXPECT_FALSE(info.isDirectory);
    ASSERT_EQ(KVRGetFileInfo(FrameworkPath(folder.file("été")), &info), S_OK);
    EXPECT_TRUE(info.isDirectory);
}

TEST(KVRGetFileInfo, leaves_the_output_alone_on_failure) {
    const TempFolder folder;
    fs::create_symlink("nowhere", folder.path() / "dangling");
    KVRFileInfo info{11, 22, true};
    EXPECT_EQ(KVRGetFileInfo(folder.file("none"), &info), E_FAIL);
    EXPECT_EQ(KVRGetFileInfo(folder.file("dangling"), &info), E_FAIL);
    EXPECT_EQ(info.size, 11);
    EXPECT_EQ(info.modificationTime, 22);
    EXPECT_TRUE(info.isDirectory);
    EXPECT_EQ(KVRGetFileInfo(folder.path().string(), nullptr), E_INVALIDARG);
}

TEST(KVRFileStat, reads_time_and_size_through_links) {
    const TempFolder folder;
    const std::string file = folder.write("a.bin", std::string(4097, 'x'));
    setModificationTime(file, 1500000000);
    fs::create_symlink("a.bin", folder.path() / "link");
    KVRFileStatus status;
    ASSERT_EQ(KVRFileStat(folder.file("link"), status), S_OK);
    EXPECT_EQ(status.size, 4097);
    EXPECT_EQ(status.modificationTime, 1500000000);
}

TEST(KVRFileStat, size_of_a_huge_file_is_the_largest_number) {
    const TempFolder folder;
    const std::string file = folder.write("huge");
    fs::resize_file(file, 5ULL << 30);  // a hole, no blocks
    KVRFileStatus status;
    ASSERT_EQ(KVRFileStat(file, status), S_OK);
    EXPECT_EQ(status.size, std::numeric_limits<std::int32_t>::max());
    KVRFileInfo info;
    ASSERT_EQ(KVRGetFileInfo(file, &info), S_OK);
    EXPECT_EQ(info.size, 5LL << 30);
}

TEST(KVRFileStat, leaves_the_output_alone_on_failure) {
    const TempFolder folder;
    KVRFileStatus status{33, 44};
    EXPECT_EQ(KVRFileStat(folder.file("none"), status), E_FAIL);
    EXPECT_EQ(status.modificationTime, 33);
    EXPECT_EQ(status.size, 44);
}

TEST(KVRCreateDirectory, makes_missing_parents_and_accepts_what_is_there) {
    const TempFolder folder;
    const KVRUnicodeString path = FrameworkPath(folder.file("a")) + "\\b/c\\é";
    EXPECT_EQ(KVRCreateDirectory(path), S_OK);
    EXPECT_TRUE(fs::is_directory(folder.path() / "a/b/c/é"));
    EXPECT_EQ(KVRCreateDirectory(path), S_OK);
    EXPECT_EQ(KVRCreateDirectory(path + "\\"), S_OK);
    EXPECT_EQ(KVRCreateDirectory(path + "\\x\\y\\"), S_OK);
    EXPECT_TRUE(fs::is_directory(folder.path() / "a/b/c/é/x/y"));
    fs::create_directory_symlink("a", folder.path() / "link");
    EXPECT_EQ(KVRCreateDirectory(folder.file("link")), S_OK);
}

TEST(KVRCreateDirectory, fails_when_something_is_in_the_way) {
    const TempFolder folder;
    for (const auto& path : impossiblePaths(folder)) {
        if (path.View().ends_with("missing/below") || path.View() == "\uFFFD") continue;
        EXPECT_EQ(KVRCreateDirectory(path), E_FAIL) << path.SubString(0, 200);
    }
    EXPECT_EQ(KVRCreateDirectory(folder.file("plain")), E_FAIL);
    EXPECT_TRUE(fs::is_regular_file(folder.path() / "plain"));
}

TEST(KVRListDirectory, lists_names_without_the_folder) {
    const TempFolder folder;
    folder.write("b.png");
    folder.write("é");
    folder.write(".hidden");
    folder.write("sub/inside");
    fs::create_symlink("nowhere", folder.path() / "dangling");
    KVRListValKVRUnicodeString names;
    names.Append("old");
    ASSERT_EQ(KVRListDirectory(FrameworkPath(folder.path().native()), names), S_OK);
    EXPECT_EQ(sortedNames(names),
              (std::vector<std::string>{".hidden", "b.png", "dangling", "sub", "é"}));
    EXPECT_EQ(KVRListDirectory(folder.file("sub"), names), S_OK);
    EXPECT_EQ(sortedNames(names), std::vector<std::string>{"inside"});
}

TEST(KVRListDirectory, failure_and_empty_folder_differ) {
    const TempFolder folder;
    folder.write("plain");
    fs::create_directory(folder.path() / "empty");
    KVRListValKVRUnicodeString names;
    names.Append("old");
    EXPECT_EQ(KVRListDirectory(folder.file("empty"), names), S_OK);
    EXPECT_EQ(names.Size(), 0);
    for (const char* name : {"none", "plain"}) {
        names.Append("old");
        EXPECT_EQ(KVRListDirectory(folder.file(name), names), E_FAIL);
        EXPECT_EQ(names.Size(), 0);
    }
}

TEST(KVRListDirectory, name_that_is_no_utf8_is_listed_with_replacement_characters) {
    const TempFolder folder;
    folder.write("a\xFF");
    KVRListValKVRUnicodeString names;
    ASSERT_EQ(KVRListDirectory(folder.path().string(), names), S_OK);
    ASSERT_EQ(names.Size(), 1);
    EXPECT_EQ(names[1], KVRUnicodeString("a\uFFFD"));
}

TEST(KVRDeleteFile, deletes_plain_files_and_links_only) {
    const TempFolder folder;
    folder.write("sub/file");
    fs::create_directory_symlink("sub", folder.path() / "link");
    fs::create_directory(folder.path() / "empty");
    ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
    for (const char* name : {"sub", "empty", "pipe", "none", ""}) {
        EXPECT_EQ(KVRDeleteFile(FrameworkPath(folder.file(name))), E_FAIL) << name;
    }
    EXPECT_EQ(KVRDeleteFile(folder.file("link")), S_OK);
    EXPECT_TRUE(fs::exists(folder.path() / "sub/file"));
    EXPECT_EQ(KVRDeleteFile(FrameworkPath(folder.file("sub/file"))), S_OK);
    EXPECT_FALSE(fs::exists(folder.path() / "sub/file"));
    EXPECT_EQ(KVRDeleteFile(folder.file("sub/file")), E_FAIL);
    EXPECT_TRUE(fs::is_fifo(folder.path() / "pipe"));
}

TEST(KVRFileAccess, asks_for_existence_by_default) {
    const TempFolder folder;
    const std::string file = folder.write("a");
    for (const int mode : {0, 2, 4, 6})
        EXPECT_EQ(KVRFileAccess(FrameworkPath(file), mode), S_OK) << mode;
    EXPECT_EQ(KVRFileAccess(folder.path().string(), 0), S_OK);
    EXPECT_EQ(KVRFileAccess(folder.file("none"), 0), E_FAIL);
    for (const int mode : {-1, 1, 3, 8}) EXPECT_EQ(KVRFileAccess(file, mode), E_INVALIDARG) << mode;
}

TEST(KVRFileSystem, refuses_what_the_user_may_not_do) {
    const TempFolder folder;
    fs::permissions(folder.path(),
                    fs::perms::owner_all | fs::perms::others_read | fs::perms::others_exec);
    const std::string file = folder.write("readable");
    const std::string secret = folder.write("secret");
    folder.write("closed/file");
    fs::permissions(folder.path() / "readable", fs::perms::owner_read | fs::perms::others_read);
    fs::permissions(folder.path() / "secret", fs::perms::none);
    fs::permissions(folder.path() / "closed", fs::perms::none);
    const auto readOnly = [&] {
        fs::permissions(folder.path(), fs::perms::owner_read | fs::perms::owner_exec |
                                           fs::perms::others_read | fs::perms::others_exec);
    };
    readOnly();
    EXPECT_EQ(asOrdinaryUser([&] { return KVRFileAccess(file, 4) == S_OK ? 0 : 1; }), 0);
    EXPECT_EQ(asOrdinaryUser([&] { return KVRFileAccess(file, 2) == E_FAIL ? 0 : 1; }), 0);
    EXPECT_EQ(asOrdinaryUser([&] { return KVRFileAccess(secret, 4) == E_FAIL ? 0 : 1; }), 0);
    EXPECT_EQ(asOrdinaryUser([&] { return KVRFileAccess(secret, 0) == S_OK ? 0 : 1; }), 0);
    EXPECT_EQ(asOrdinaryUser([&] { return KVRDeleteFile(file) == E_FAIL ? 0 : 1; }), 0);
    EXPECT_EQ(
        asOrdinaryUser([&] { return KVRCreateDirectory(folder.file("new")) == E_FAIL ? 0 : 1; }),
        0);
    EXPECT_EQ(asOrdinaryUser([&] {
                  KVRListValKVRUnicodeString names;
                  return KVRListDirectory(folder.file("closed"), names) == E_FAIL ? 0 : 1;
              }),
              0);
    fs::permissions(folder.path(), fs::perms::owner_all);
    fs::permissions(folder.path() / "closed", fs::perms::owner_all);
    EXPECT_TRUE(fs::exists(file));
}

TEST(KVRReadFile, reads_whole_files_up_to_a_limit) {
    const TempFolder folder;
    const std::string path = folder.write("a", std::string("one\0two", 7));
    std::string content = "old", reason = "old";
    EXPECT_EQ(KVRReadFile(path, 7, content, reason), S_OK);
    EXPECT_EQ(content, std::string("one\0two", 7));
    EXPECT_EQ(KVRReadFile(path, 6, content, reason), E_FAIL);
    EXPECT_EQ(content, "");
    EXPECT_EQ(reason, "one of 7 bytes, where 6 are the most");
    EXPECT_EQ(KVRReadFile(folder.write("empty"), 6, content, reason), S_OK);
    EXPECT_EQ(content, "");
}

TEST(KVRReadFile, reads_regular_files_only) {
    const TempFolder folder;
    const std::string pipe = folder.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::string content = "old", reason;
    EXPECT_EQ(KVRReadFile(pipe, 100, content, reason), E_FAIL);
    EXPECT_EQ(reason, "something else than a regular file");
    EXPECT_EQ(content, "");
    EXPECT_EQ(KVRReadFile(folder.path().string(), 100, content, reason), E_FAIL);
    EXPECT_EQ(reason, "a folder");
    EXPECT_EQ(KVRReadFile(folder.file("none"), 100, content, reason), E_FAIL);
    EXPECT_EQ(reason, "No such file or directory");
}
