#include "RenderingBase/host/app/KVRSettingRepository.h"
#include "tests/host/ChildProcess.h"
#include "tests/host/EnvironmentVariable.h"
#include "tests/support/TempFolder.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using rb::test::ChildProcess;
using rb::test::EnvironmentVariable;

namespace {

using Repository = KVRVar<KVRSettingRepository>;

Repository get(const char* name) {
    return Repository::Adopt(KVRSettingRepository::GetRepository(name));
}
Repository create(const char* name) {
    return Repository::Adopt(KVRSettingRepository::CreateRepository(name));
}

std::string content(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class KVRSettingRepositoryTest : public testing::Test {
protected:
    fs::path file(const std::string& repository) const {
        return m_folder.path() / "RenderingBase" / (repository + ".ini");
    }
    std::string write(const std::string& repository, std::string_view text) const {
        return m_folder.write("RenderingBase/" + repository + ".ini", text);
    }

    rb::test::TempFolder m_folder;
    EnvironmentVariable m_configuration{"XDG_CONFIG_HOME", m_folder.path().c_str()};
};

}  // namespace

TEST_F(KVRSettingRepositoryTest, repository_never_created_is_null_and_leaves_no_trace) {
    EXPECT_FALSE(get("MaterialOptionsSettings"));
    EXPECT_TRUE(fs::is_empty(m_folder.path()));
    EXPECT_TRUE(KVRSettingRepository::ListRepositories().empty());
}

TEST_F(KVRSettingRepositoryTest, settings_are_read_back) {
    const auto written = create("RenderingOptionsSettings");
    ASSERT_TRUE(written);
    EXPECT_EQ(written->WriteSetting("ProfileCombo", 2), S_OK);
    EXPECT_EQ(written->WriteSetting("ProfileFileBrowse", R"(C:\été\screen.icc)"), S_OK);
    const auto read = get("RenderingOptionsSettings");
    ASSERT_TRUE(read);
    int number = 0;
    EXPECT_EQ(read->ReadSetting("ProfileCombo", number), S_OK);
    EXPECT_EQ(number, 2);
    KVRUnicodeString text;
    EXPECT_EQ(read->ReadSetting("ProfileCombo", text), S_OK);
    EXPECT_EQ(text, KVRUnicodeString("2"));
    EXPECT_EQ(read->ReadSetting("ProfileFileBrowse", text), S_OK);
    EXPECT_EQ(text, KVRUnicodeString(R"(C:\été\screen.icc)"));
    EXPECT_STREQ(read->IsA(), "KVRSettingRepository");
    EXPECT_EQ(read->AddRef(), 2U);
    read->Release();
    const KVRUnicodeString path = read->GetFilePath();
    EXPECT_TRUE(path.View().ends_with(R"(\RenderingBase\RenderingOptionsSettings.ini)")) << path;
}

TEST_F(KVRSettingRepositoryTest, another_process_reads_what_this_one_wrote) {
    ASSERT_EQ(create("Shared")->WriteSetting("Name", "a = b; c"), S_OK);
    ChildProcess reader({RB_HOST_TEST_PROGRAM, "read-setting", "Shared", "Name"});
    EXPECT_EQ(reader.wait(), 0);
    EXPECT_EQ(reader.output(), "a = b; c");
    ChildProcess writer({RB_HOST_TEST_PROGRAM, "write-settings", "Shared", "Name", "1"});
    EXPECT_EQ(writer.wait(), 0);
    int number = -1;
    EXPECT_EQ(get("Shared")->ReadSetting("Name0", number), S_OK);
    EXPECT_EQ(number, 0);
}

TEST_F(KVRSettingRepositoryTest, any_text_comes_back_as_it_was) {
    std::vector<std::string> texts = {"",
                                      " ",
                                      "  leading",
                                      "trailing  ",
                                      "a=b",
                                      "=",
                                      ";",
                                      "a;b;",
                                      "#no comment",
                                      "[group]",
                                      "line\nline",
                                      "\n",
                                      "\r\n",
                                      "\t\ttab",
                                      "\fform feed",
                                      "\vtab",
                                      R"(C:\new\table\server)",
                                      R"(\)",
                                      R"(\\)",
                                      R"(\s)",
                                      R"(tail\)",
                                      "é€😀",
                                      "\uFEFFmark",
                                      "\x01\x7f",
                                      "\"quoted\"",
                                      "'",
                                      "%d",
                                      std::string(100000, 'x')};
    std::mt19937 random(7);
    const std::string alphabet = " \t\n\r\f\v\\sntrf=;#[]ab";
    for (int i = 0; i < 50; ++i) {
        std::string text;
        for (std::size_t n = random() % 40; n > 0; --n)
            text += alphabet[random() % alphabet.size()];
        texts.push_back(text);
    }
    const auto repository = create("Texts");
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::string name = "Name" + std::to_string(i % 40);
        ASSERT_EQ(repository->WriteSetting(name.c_str(), KVRUnicodeString(texts[i])), S_OK);
        KVRUnicodeString back("old");
        ASSERT_EQ(get("Texts")->ReadSetting(name.c_str(), back), S_OK);
        ASSERT_EQ(back.View(), texts[i]) << i;
    }
}

TEST_F(KVRSettingRepositoryTest, numbers_are_whole_decimal_numbers) {
    const auto repository = create("Numbers");
    for (const int number : {0, -1, INT_MAX, INT_MIN}) {
        int back = 5;
        ASSERT_EQ(repository->WriteSetting("Number", number), S_OK);
        ASSERT_EQ(repository->ReadSetting("Number", back), S_OK);
        EXPECT_EQ(back, number);
    }
    for (const char* text : {"", "x", "2x", " 2", "2.5", "0x10", "2147483648", "+1"}) {
        ASSERT_EQ(repository->WriteSetting("Number", text), S_OK);
        int back = 5;
        EXPECT_EQ(repository->ReadSetting("Number", back), E_FAIL) << text;
        EXPECT_EQ(back, 5);
    }
}

TEST_F(KVRSettingRepositoryTest, setting_never_written_fails_and_leaves_the_value) {
    const auto repository = create("Empty");
    KVRUnicodeString text("old");
    int number = 5;
    EXPECT_EQ(repository->ReadSetting("Name", text), E_FAIL);
    EXPECT_EQ(repository->ReadSetting("Name", number), E_FAIL);
    ASSERT_EQ(repository->WriteSetting("Name", "x"), S_OK);
    EXPECT_EQ(repository->ReadSetting("name", text), E_FAIL);  // case counts
    EXPECT_EQ(repository->ReadSetting(nullptr, text), E_INVALIDARG);
    EXPECT_EQ(repository->ReadSetting(nullptr, number), E_INVALIDARG);
    EXPECT_EQ(text, KVRUnicodeString("old"));
    EXPECT_EQ(number, 5);
}

TEST_F(KVRSettingRepositoryTest, names_that_would_leave_the_folder_are_refused) {
    m_folder.write("x.ini", "[Settings]\nName=outside\n");
    create("Inside");
    for (const char* name :
         {"", ".", "..", "../x", "a/b", "a\\b", "/tmp/x", ".hidden", "x\n", "é", "a b"}) {
        EXPECT_FALSE(create(name)) << name;
        EXPECT_FALSE(get(name)) << name;
    }
    EXPECT_FALSE(create(nullptr));
    EXPECT_FALSE(get(nullptr));
    EXPECT_FALSE(create(std::string(300, 'x').c_str()));
    EXPECT_EQ(KVRSettingRepository::ListRepositories(), std::vector<KVRUnicodeString>{"Inside"});
}

TEST_F(KVRSettingRepositoryTest, setting_names_that_a_key_file_cannot_hold_are_refused) {
    const auto repository = create("Names");
    const std::string before = content(file("Names"));
    for (const char* name : {"", "a=b", "a b", "[a]", "a[de]", "a\nb=c", "#a", "é"}) {
        EXPECT_EQ(repository->WriteSetting(name, "x"), E_INVALIDARG) << name;
        KVRUnicodeString text;
        EXPECT_EQ(repository->ReadSetting(name, text), E_FAIL) << name;
    }
    EXPECT_EQ(repository->WriteSetting(nullptr, "x"), E_INVALIDARG);
    EXPECT_EQ(content(file("Names")), before);
}

TEST_F(KVRSettingRepositoryTest, creating_again_keeps_the_settings) {
    ASSERT_EQ(create("Again")->WriteSetting("Name", "kept"), S_OK);
    KVRUnicodeString text;
    EXPECT_EQ(create("Again")->ReadSetting("Name", text), S_OK);
    EXPECT_EQ(text, KVRUnicodeString("kept"));
}

TEST_F(KVRSettingRepositoryTest, lists_repositories_and_settings) {
    const auto repository = create("Second");
    create("First");
    write("not a repository", "");
    m_folder.write("RenderingBase/other.txt", "");
    EXPECT_EQ(KVRSettingRepository::ListRepositories(),
              (std::vector<KVRUnicodeString>{"First", "Second"}));
    ASSERT_EQ(repository->WriteSetting("b", "1\n2"), S_OK);
    ASSERT_EQ(repository->WriteSetting("a", " x"), S_OK);
    std::vector<KVRSettingRepository::Setting> settings;
    EXPECT_EQ(repository->ListSettings(settings), S_OK);
    EXPECT_EQ(settings, (std::vector<KVRSettingRepository::Setting>{{"b", "1\n2"}, {"a", " x"}}));
    EXPECT_EQ(get("First")->ListSettings(settings), S_OK);
    EXPECT_TRUE(settings.empty());
}

TEST_F(KVRSettingRepositoryTest, writing_keeps_comments_and_other_groups) {
    write("Edited", "# by hand\n\n[Settings]\n# first\nA=1\n\n[Other]\nB=2\n");
    ASSERT_EQ(get("Edited")->WriteSetting("A", "3"), S_OK);
    EXPECT_EQ(content(file("Edited")), "# by hand\n\n[Settings]\n# first\nA=3\n\n[Other]\nB=2\n");
}

TEST_F(KVRSettingRepositoryTest, damaged_file_fails_and_is_left_alone) {
    const auto repository = create("Damaged");
    for (const std::string& damage :
         {std::string("no key file"), std::string("[Settings]\nA=1\nbroken line\n"),
          std::string("A=1\n"), std::string("[Settings]\nA=\xFF\n"),
          std::string("[Settings]\nA=1\n\0\0", 18)}) {
        write("Damaged", damage);
        KVRUnicodeString text("old");
        std::vector<KVRSettingRepository::Setting> settings(1);
        EXPECT_EQ(repository->ReadSetting("A", text), E_FAIL) << damage;
        EXPECT_EQ(repository->ListSettings(settings), E_FAIL);
        EXPECT_TRUE(settings.empty());
        EXPECT_EQ(repository->WriteSetting("A", "2"), E_FAIL);
        EXPECT_TRUE(create("Damaged"));
        EXPECT_TRUE(get("Damaged"));  // it was created; only its content is not known
        EXPECT_EQ(text, KVRUnicodeString("old"));
        EXPECT_EQ(content(file("Damaged")), damage);
    }
}

TEST_F(KVRSettingRepositoryTest, reason_of_a_failure_goes_to_the_host_trace) {
    const auto repository = create("Damaged");
    write("Damaged", "no key file");
    const EnvironmentVariable traces("ZWTSysTraces", "KVRSettingRepository");
    testing::internal::CaptureStderr();
    int number = 0;
    EXPECT_EQ(repository->ReadSetting("A", number), E_FAIL);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Damaged.ini"), std::string::npos);
}

TEST_F(KVRSettingRepositoryTest, repository_that_was_removed_fails_and_does_not_come_back) {
    const auto repository = create("Removed");
    fs::remove(file("Removed"));
    int number = 0;
    EXPECT_EQ(repository->ReadSetting("A", number), E_FAIL);
    EXPECT_EQ(repository->WriteSetting("A", 1), E_FAIL);
    EXPECT_FALSE(fs::exists(file("Removed")));
    EXPECT_FALSE(get("Removed"));
}

TEST_F(KVRSettingRepositoryTest, write_replaces_the_file_and_leaves_no_other) {
    const auto repository = create("Whole");
    ASSERT_EQ(repository->WriteSetting("A", 1), S_OK);
    fs::create_hard_link(file("Whole"), m_folder.path() / "before");
    ASSERT_EQ(repository->WriteSetting("A", 2), S_OK);
    EXPECT_EQ(content(m_folder.path() / "before"), "[Settings]\nA=1\n");  // never changed in place
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(file("Whole").parent_path())) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{".lock", "Whole.ini"}));
}

TEST_F(KVRSettingRepositoryTest, folder_that_cannot_be_written_is_a_failure) {
    ASSERT_EQ(create("ReadOnly")->WriteSetting("A", 1), S_OK);
    fs::permissions(m_folder.path(), fs::perms::owner_all | fs::perms::others_all);
    const fs::perms readable = fs::perms::owner_read | fs::perms::owner_exec |
                               fs::perms::others_read | fs::perms::others_exec;
    fs::permissions(file("ReadOnly"), readable);
    fs::permissions(file("ReadOnly").parent_path(), readable);
    const int status = rb::test::asOrdinaryUser([] {
        int number = 0;
        const auto repository = get("ReadOnly");
        if (!repository || Failed(repository->ReadSetting("A", number)) || number != 1) return 1;
        if (repository->WriteSetting("A", 2) != E_FAIL) return 2;
        return create("New") ? 3 : 0;
    });
    EXPECT_EQ(status, 0);
    fs::permissions(file("ReadOnly").parent_path(), fs::perms::owner_all);
    EXPECT_EQ(content(file("ReadOnly")), "[Settings]\nA=1\n");
}

TEST_F(KVRSettingRepositoryTest, folder_follows_the_environment_at_each_call) {
    create("Here");
    const rb::test::TempFolder other;
    const EnvironmentVariable home("HOME", other.path().c_str());
    {
        const EnvironmentVariable elsewhere("XDG_CONFIG_HOME", other.path().c_str());
        EXPECT_FALSE(get("Here"));
    }
    for (const char* notUsable : {static_cast<const char*>(nullptr), "", "relative/folder"}) {
        const EnvironmentVariable variable("XDG_CONFIG_HOME", notUsable);
        EXPECT_TRUE(create("AtHome"));
        EXPECT_TRUE(fs::exists(other.path() / ".config/RenderingBase/AtHome.ini"));
        fs::remove_all(other.path() / ".config");
    }
    EXPECT_TRUE(get("Here"));
}

TEST_F(KVRSettingRepositoryTest, two_processes_writing_at_once_lose_nothing) {
    constexpr int kCount = 30;
    ChildProcess one(
        {RB_HOST_TEST_PROGRAM, "write-settings", "Busy", "one", std::to_string(kCount)});
    ChildProcess two(
        {RB_HOST_TEST_PROGRAM, "write-settings", "Busy", "two", std::to_string(kCount)});
    EXPECT_EQ(one.wait(), 0) << one.output();
    EXPECT_EQ(two.wait(), 0) << two.output();
    const auto repository = get("Busy");
    ASSERT_TRUE(repository);
    for (int i = 0; i < kCount; ++i) {
        for (const char* prefix : {"one", "two"}) {
            int number = -1;
            EXPECT_EQ(repository->ReadSetting((prefix + std::to_string(i)).c_str(), number), S_OK);
            EXPECT_EQ(number, i);
        }
    }
}
