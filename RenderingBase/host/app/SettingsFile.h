#pragma once

#include "RenderingBase/host/base/KVRUnicodeString.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// As GLib declares it.  NOLINTNEXTLINE(bugprone-reserved-identifier)
typedef struct _GKeyFile GKeyFile;

namespace rb::app {

/// One key file with settings, read and written whole.
///
///     [Settings]
///     ProfileCombo=2
///     ProfileFileBrowse=C:\\profiles\\screen.icc
///
/// Other groups and comments are kept. Paths are in the form of the system.
class SettingsFile {
public:
    explicit SettingsFile(std::string path);

    static bool exists(const std::string& path);
    /// Makes an empty file in a folder that exists; a file that is there already is left alone.
    static bool create(const std::string& path);
    /// Sets one value of a file that exists. No other change made meanwhile is lost, by whatever
    /// process.
    static bool replace(const std::string& path, const char* name, const KVRUnicodeString& value);

    /// Reads the file; false, with the reason in the host trace, when it is missing or damaged.
    bool load();
    std::optional<KVRUnicodeString> get(const char* name) const;
    std::vector<std::pair<KVRUnicodeString, KVRUnicodeString>> list() const;

private:
    struct Deleter {
        void operator()(GKeyFile* file) const;
    };

    bool save() const;

    std::string m_path;
    std::unique_ptr<GKeyFile, Deleter> m_keys;
};

}  // namespace rb::app
