#pragma once

/// @file  Where readers take bytes from: a file or memory.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace rb::imaging {

/// A sequence of bytes of known length, read at any place. Not for use by two threads at once.
class ByteSource {
public:
    virtual ~ByteSource() = default;
    virtual std::uint64_t size() const = 0;
    /// Copies up to @p count bytes from @p offset on; returns how many there were.
    virtual std::size_t read(std::uint64_t offset, void* to, std::size_t count) = 0;
    /// Why a read gave fewer bytes than there are, in the system's own words; empty when none did.
    virtual std::string failure() const { return {}; }
};

/// Whether @p bytes begin with those of @p start.
inline bool startsWith(std::span<const std::byte> bytes, std::string_view start) {
    return bytes.size() >= start.size() &&
           std::memcmp(bytes.data(), start.data(), start.size()) == 0;
}

/// Bytes in memory, which must outlive the source.
class MemorySource final : public ByteSource {
public:
    explicit MemorySource(std::span<const std::byte> bytes) : m_bytes(bytes) {}
    std::uint64_t size() const override { return m_bytes.size(); }
    std::size_t read(std::uint64_t offset, void* to, std::size_t count) override;

private:
    std::span<const std::byte> m_bytes;
};

/// A regular file. Read with a positioned system call: a file that another program cuts short
/// meanwhile gives fewer bytes, never a crash as a mapped one would.
class FileSource final : public ByteSource {
public:
    /// @param nativePath  A path of the system.
    /// @param reason      Set when null is returned: the system's own words.
    static std::unique_ptr<FileSource> open(const std::string& nativePath, std::string& reason);
    ~FileSource() override;
    std::uint64_t size() const override { return m_size; }
    std::size_t read(std::uint64_t offset, void* to, std::size_t count) override;
    std::string failure() const override;

private:
    FileSource(int descriptor, std::uint64_t size) : m_descriptor(descriptor), m_size(size) {}
    int m_descriptor;
    std::uint64_t m_size;
    std::atomic<int> m_error{0};  // of the last read that failed; several threads read
};

}  // namespace rb::imaging
