#pragma once

/// @file  Where the JPEG codec takes its bytes from.

#include "RenderingBase/host/imaging/formats/BufferedSource.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <jerror.h>
#include <jpeglib.h>

namespace rb::imaging {

/// The codec's view of a source.
struct JpegInput : jpeg_source_mgr {
    explicit JpegInput(ByteSource& source) : jpeg_source_mgr{}, bytes(source) {
        init_source = [](j_decompress_ptr) {};
        fill_input_buffer = fill;
        skip_input_data = skip;
        resync_to_restart = jpeg_resync_to_restart;
        term_source = [](j_decompress_ptr) {};
    }

    std::uint64_t position() const { return bytes.position() - bytes_in_buffer; }

    static boolean fill(j_decompress_ptr codec) {
        auto* const self = static_cast<JpegInput*>(codec->src);
        const auto block = self->bytes.nextBlock();
        self->next_input_byte = reinterpret_cast<const JOCTET*>(block.data());
        self->bytes_in_buffer = block.size();
        if (block.empty()) ERREXIT(codec, JERR_INPUT_EOF);
        return TRUE;
    }
    static void skip(j_decompress_ptr codec, long count) {
        auto* const self = static_cast<JpegInput*>(codec->src);
        const auto wanted = static_cast<std::size_t>(std::max(count, 0L));
        const std::size_t buffered = std::min(wanted, self->bytes_in_buffer);
        self->next_input_byte += buffered;
        self->bytes_in_buffer -= buffered;
        self->bytes.skip(wanted - buffered);
    }

    BufferedSource bytes;
};

}  // namespace rb::imaging
