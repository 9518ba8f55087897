#include "RenderingBase/host/imaging/formats/TiffBlocks.h"

#include "RenderingBase/host/imaging/formats/TiffBlockDecoder.h"
#include "RenderingBase/host/imaging/formats/TiffStorage.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <limits>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace rb::imaging {
namespace {

/// The first block that failed, and why.
class FirstFault {
public:
    void note(std::uint32_t index, const ReadResult& refusal, const std::exception_ptr& thrown) {
        const std::lock_guard lock(m_mutex);
        if (index >= m_index) return;
        m_index = index;
        m_refusal = refusal;
        m_thrown = thrown;
    }
    ReadResult result() const {
        if (m_thrown) std::rethrow_exception(m_thrown);
        return m_refusal;
    }

private:
    std::mutex m_mutex;
    std::uint64_t m_index = std::numeric_limits<std::uint64_t>::max();
    ReadResult m_refusal;
    std::exception_ptr m_thrown;
};

/// Hands out blocks in rising order, so that all before the first fault get decoded.
class BlockQueue {
public:
    BlockQueue(std::uint32_t blocks, FirstFault& fault) : m_blocks(blocks), m_fault(fault) {}

    void work(TiffBlockDecoder& decoder) {
        std::uint64_t index = 0;
        try {
            while (!m_stop && (index = m_next++) < m_blocks)
                if (ReadResult refusal = decoder.decode(static_cast<std::uint32_t>(index)))
                    stop(index, refusal, nullptr);
        } catch (...) {
            stop(index, {}, std::current_exception());
        }
    }

private:
    void stop(std::uint64_t index, const ReadResult& refusal, const std::exception_ptr& thrown) {
        m_fault.note(static_cast<std::uint32_t>(index), refusal, thrown);
        m_stop = true;
    }

    const std::uint64_t m_blocks;
    FirstFault& m_fault;
    std::atomic<std::uint64_t> m_next = 0;
    std::atomic<bool> m_stop = false;
};

std::size_t threadsFor(std::uint64_t bytes, std::uint32_t blocks) {
    constexpr std::uint64_t kMostThreads = 16, kBytesEach = 1 << 20;
    const std::uint64_t processors = std::max(1U, std::thread::hardware_concurrency());
    return static_cast<std::size_t>(std::max<std::uint64_t>(
        1, std::min({processors, kMostThreads, bytes / kBytesEach, std::uint64_t{blocks}})));
}

}  // namespace

ReadResult decodeTiffBlocks(SharedSource& source, const TiffDirectory& directory,
                            const TiffPixels& pixels, std::byte* out) {
    if (ReadResult refusal = checkTileSize(directory, pixels.planes().size())) return refusal;
    TiffBlockDecoder decoder(source, directory, pixels, out);
    if (ReadResult refusal = decoder.checkStored()) return refusal;
    const std::uint32_t blocks = directory.across() * directory.down();
    FirstFault fault;
    BlockQueue queue(blocks, fault);
    const std::uint64_t bytes =
        std::uint64_t{directory.width} * directory.height *
        static_cast<std::uint64_t>(layoutOf(pixels.format()).bytesPerPixel());
    std::vector<std::thread> others(threadsFor(bytes, blocks) - 1);
    const auto help = [&] {
        try {
            TiffBlockDecoder another(source, directory, pixels, out);
            queue.work(another);
        } catch (const std::bad_alloc&) {
            // Those that got theirs will do.
        }
    };
    for (std::thread& other : others) {
        try {
            other = std::thread(help);
        } catch (const std::system_error&) {
            break;  // those that there are will do
        }
    }
    queue.work(decoder);
    for (std::thread& other : others)
        if (other.joinable()) other.join();
    return fault.result();
}

}  // namespace rb::imaging
