#include "RenderingBase/host/app/SettingsFile.h"

#include "RenderingBase/host/app/SettingText.h"
#include "RenderingBase/host/base/ZWTSysTrace.h"

#include <cerrno>
#include <fcntl.h>
#include <glib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rb::app {
namespace {

constexpr const char* kGroup = "Settings";
constexpr int kPrivateMode = S_IRUSR | S_IWUSR;

struct Free {
    void operator()(void* memory) const { g_free(memory); }
    void operator()(char** texts) const { g_strfreev(texts); }
};

/// An error of GLib, written to the host trace when it dies with a message in it.
class TracedError {
public:
    explicit TracedError(const std::string& path) : m_path(path) {}
    ~TracedError() {
        if (!m_error) return;
        if (const auto trace = ZWTSysTraceCreate("KVRSettingRepository")) {
            trace->Info("%s: %s", m_path.c_str(), m_error->message);
        }
        g_error_free(m_error);
    }
    TracedError(const TracedError&) = delete;
    TracedError& operator=(const TracedError&) = delete;
    operator GError**() { return &m_error; }

private:
    const std::string& m_path;
    GError* m_error = nullptr;
};

/// Keeps other writers, of this process or another, out of a folder while it lives. The lock file
/// stays: removing it would let two writers hold locks on two files of the same name.
class FolderLock {
public:
    explicit FolderLock(const std::string& file) {
        const std::string lockFile = file.substr(0, file.rfind('/')) + "/.lock";
        m_descriptor = open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kPrivateMode);
        if (m_descriptor < 0) return;
        int status = 0;
        do {
            status = flock(m_descriptor, LOCK_EX);
        } while (status != 0 && errno == EINTR);
        m_held = status == 0;
    }
    ~FolderLock() {
        if (m_descriptor >= 0) close(m_descriptor);
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    bool held() const { return m_held; }

private:
    int m_descriptor = -1;
    bool m_held = false;
};

bool writeWhole(const std::string& path, const char* content, gssize size) {
    TracedError error(path);
    const auto flags = static_cast<GFileSetContentsFlags>(G_FILE_SET_CONTENTS_CONSISTENT |
                                                          G_FILE_SET_CONTENTS_DURABLE);
    return g_file_set_contents_full(path.c_str(), content, size, flags, kPrivateMode, error);
}

}  // namespace

void SettingsFile::Deleter::operator()(GKeyFile* file) const { g_key_file_free(file); }

SettingsFile::SettingsFile(std::string path) : m_path(std::move(path)), m_keys(g_key_file_new()) {}

bool SettingsFile::exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool SettingsFile::create(const std::string& path) {
    const FolderLock lock(path);
    if (!lock.held()) return false;
    return exists(path) || writeWhole(path, "[Settings]\n", -1);
}

bool SettingsFile::replace(const std::string& path, const char* name,
                           const KVRUnicodeString& value) {
    const FolderLock lock(path);
    SettingsFile file(path);
    if (!lock.held() || !file.load()) return false;
    const std::string line = escapedSetting(value.View());
    g_key_file_set_value(file.m_keys.get(), kGroup, name, line.c_str());
    return file.save();
}

bool SettingsFile::load() {
    TracedError error(m_path);
    char* content = nullptr;
    gsize size = 0;
    if (!g_file_get_contents(m_path.c_str(), &content, &size, error)) return false;
    const std::unique_ptr<char, Free> owner(content);
    if (!g_utf8_validate(content, static_cast<gssize>(size), nullptr)) {
        g_set_error_literal(error, G_KEY_FILE_ERROR, G_KEY_FILE_ERROR_UNKNOWN_ENCODING,
                            "expected UTF-8, found other bytes");
        return false;
    }
    const auto flags =
        static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
    return g_key_file_load_from_data(m_keys.get(), content, size, flags, error);
}

bool SettingsFile::save() const {
    gsize size = 0;
    const std::unique_ptr<char, Free> content(g_key_file_to_data(m_keys.get(), &size, nullptr));
    return writeWhole(m_path, content.get(), static_cast<gssize>(size));
}

std::optional<KVRUnicodeString> SettingsFile::get(const char* name) const {
    const std::unique_ptr<char, Free> line(
        g_key_file_get_value(m_keys.get(), kGroup, name, nullptr));
    if (!line) return {};
    return KVRUnicodeString(unescapedSetting(line.get()));
}

std::vector<std::pair<KVRUnicodeString, KVRUnicodeString>> SettingsFile::list() const {
    std::vector<std::pair<KVRUnicodeString, KVRUnicodeString>> settings;
    const std::unique_ptr<char*, Free> names(
        g_key_file_get_keys(m_keys.get(), kGroup, nullptr, nullptr));
    for (char** name = names.get(); name && *name; ++name) {
        if (auto value = get(*name)) settings.emplace_back(*name, std::move(*value));
    }
    return settings;
}

}  // namespace rb::app
