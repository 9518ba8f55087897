#include "RenderingBase/host/imaging/formats/InflatedStream.h"

#include <libdeflate.h>
#include <memory>
#include <new>

namespace rb::imaging {

bool inflateStream(std::span<const std::byte> stream, std::span<std::byte> content) {
    struct Free {
        void operator()(libdeflate_decompressor* d) const { libdeflate_free_decompressor(d); }
    };
    const std::unique_ptr<libdeflate_decompressor, Free> inflater(libdeflate_alloc_decompressor());
    if (!inflater) throw std::bad_alloc();
    return libdeflate_zlib_decompress(inflater.get(), stream.data(), stream.size(), content.data(),
                                      content.size(), nullptr) == LIBDEFLATE_SUCCESS;
}

}  // namespace rb::imaging
