#include "RenderingBase/host/files/AtomicFile.h"
#include "tests/support/TempFolder.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using rb::files::AtomicFile;

std::string content(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::size_t entries(const fs::path& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

}  // namespace

TEST(AtomicFile, appears_under_its_name_when_committed) {
    const rb::test::TempFolder folder;
    AtomicFile file(folder.file("new.txt"));
    ASSERT_TRUE(file.stream());
    std::fputs("hello", file.stream());
    EXPECT_FALSE(fs::exists(folder.file("new.txt")));
    ASSERT_TRUE(file.commit()) << file.reason();
    EXPECT_EQ(content(folder.file("new.txt")), "hello");
    EXPECT_EQ(entries(folder.path()), 1u);
}

TEST(AtomicFile, leaves_nothing_without_commit) {
    const rb::test::TempFolder folder;
    { std::fputs("half", AtomicFile(folder.file("new.txt")).stream()); }
    EXPECT_EQ(entries(folder.path()), 0u);
}

TEST(AtomicFile, keeps_the_old_file_until_the_new_one_is_complete) {
    const rb::test::TempFolder folder;
    const std::string path = folder.write("old.txt", "old");
    { std::fputs("half", AtomicFile(path).stream()); }
    EXPECT_EQ(content(path), "old");
    AtomicFile file(path);
    std::fputs("new", file.stream());
    ASSERT_TRUE(file.commit());
    EXPECT_EQ(content(path), "new");
}

TEST(AtomicFile, says_why_it_cannot_be_made) {
    const rb::test::TempFolder folder;
    AtomicFile missing(folder.file("no/such/folder.txt"));
    EXPECT_EQ(missing.stream(), nullptr);
    EXPECT_EQ(missing.reason(), "No such file or directory");
    EXPECT_FALSE(missing.commit());
    AtomicFile onFolder(folder.path().string());
    EXPECT_EQ(onFolder.stream(), nullptr);
    EXPECT_EQ(onFolder.reason(), "a folder of that name");
}

TEST(AtomicFile, never_replaces_a_device) {
    AtomicFile file("/dev/null");
    EXPECT_EQ(file.stream(), nullptr);
    EXPECT_EQ(file.reason(), "a device of that name");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(AtomicFile, has_the_permissions_of_a_file_made_by_the_user) {
    const rb::test::TempFolder folder;
    AtomicFile file(folder.file("new.txt"));
    ASSERT_TRUE(file.commit());
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(static_cast<mode_t>(fs::status(folder.file("new.txt")).permissions()), 0666 & ~mask);
}

TEST(AtomicFile, takes_the_longest_name_that_the_system_has) {
    const rb::test::TempFolder folder;
    const std::string path = folder.file(std::string(255, 'n'));
    AtomicFile file(path);
    std::fputs("hello", file.stream());
    ASSERT_TRUE(file.commit()) << file.reason();
    EXPECT_EQ(content(path), "hello");
}

TEST(AtomicFile, replaces_what_a_link_leads_to_and_keeps_link_and_mode) {
    const rb::test::TempFolder folder;
    const std::string target = folder.write("target.txt", "old");
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("target.txt", folder.path() / "link.txt");
    AtomicFile file(folder.file("link.txt"));
    std::fputs("new", file.stream());
    ASSERT_TRUE(file.commit()) << file.reason();
    EXPECT_TRUE(fs::is_symlink(folder.path() / "link.txt"));
    EXPECT_EQ(content(target), "new");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}
