#include "RenderingBase/host/app/KVRSettingRepository.h"

#include "RenderingBase/host/app/SettingsFile.h"
#include "RenderingBase/host/app/SettingsFolder.h"
#include "RenderingBase/host/base/Guarded.h"
#include "RenderingBase/host/base/KVRList.h"
#include "RenderingBase/host/files/KVRFileSystem.h"
#include "RenderingBase/host/files/KVRPath.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <optional>

using rb::app::SettingsFile;

namespace {

constexpr std::string_view kFileExtension = ".ini";

bool isSettingName(std::string_view name) {
    const auto allowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '-' || c == '.';
    };
    return !name.empty() && std::all_of(name.begin(), name.end(), allowed);
}

// A leading dot would hide the file, or leave the folder.
bool isRepositoryName(std::string_view name) { return isSettingName(name) && name.front() != '.'; }

std::string repositoryFile(std::string_view name) {
    return rb::app::settingsFolder() + "/" + std::string(name) + std::string(kFileExtension);
}

}  // namespace

KVRSettingRepository* KVRSettingRepository::GetRepository(const char* name) {
    if (!name || !isRepositoryName(name)) return nullptr;
    try {
        std::string file = repositoryFile(name);
        if (!SettingsFile::exists(file)) return nullptr;
        return new KVRSettingRepository(std::move(file));
    } catch (const std::exception&) {
        return nullptr;
    }
}

KVRSettingRepository* KVRSettingRepository::CreateRepository(const char* name) {
    if (!name || !isRepositoryName(name)) return nullptr;
    try {
        std::string file = repositoryFile(name);
        if (!rb::app::makeSettingsFolder() || !SettingsFile::create(file)) return nullptr;
        return new KVRSettingRepository(std::move(file));
    } catch (const std::exception&) {
        return nullptr;
    }
}

std::vector<KVRUnicodeString> KVRSettingRepository::ListRepositories() {
    std::vector<KVRUnicodeString> repositories;
    KVRListValKVRUnicodeString files;
    KVRListDirectory(FrameworkPath(rb::app::settingsFolder()), files);
    for (const KVRUnicodeString& file : files) {
        std::string_view name = file.View();
        if (!name.ends_with(kFileExtension)) continue;
        name.remove_suffix(kFileExtension.size());
        if (isRepositoryName(name)) repositories.emplace_back(name);
    }
    std::sort(repositories.begin(), repositories.end());
    return repositories;
}

HRESULT KVRSettingRepository::ReadSetting(const char* name, KVRUnicodeString& value) const {
    if (!name) return E_INVALIDARG;
    return rb::guarded([&] {
        SettingsFile file(m_file);
        auto found = file.load() && isSettingName(name) ? file.get(name) : std::nullopt;
        if (!found) return E_FAIL;
        value = std::move(*found);
        return S_OK;
    });
}

HRESULT KVRSettingRepository::ReadSetting(const char* name, int& value) const {
    KVRUnicodeString text;
    const HRESULT status = ReadSetting(name, text);
    if (Failed(status)) return status;
    const std::string_view digits = text.View();
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size()) return E_FAIL;
    value = number;
    return S_OK;
}

HRESULT KVRSettingRepository::WriteSetting(const char* name, const KVRUnicodeString& value) {
    if (!name || !isSettingName(name)) return E_INVALIDARG;
    return rb::guarded([&] { return SettingsFile::replace(m_file, name, value) ? S_OK : E_FAIL; });
}

HRESULT KVRSettingRepository::WriteSetting(const char* name, int value) {
    return rb::guarded([&] { return WriteSetting(name, KVRUnicodeString(std::to_string(value))); });
}

HRESULT KVRSettingRepository::ListSettings(std::vector<Setting>& settings) const {
    settings.clear();
    return rb::guarded([&] {
        SettingsFile file(m_file);
        if (!file.load()) return E_FAIL;
        settings = file.list();
        return S_OK;
    });
}

KVRUnicodeString KVRSettingRepository::GetFilePath() const { return FrameworkPath(m_file); }
