#pragma once

/// @file  How the JPEG codec's complaints reach C++: by a jump, with a message.

#include <array>
#include <csetjmp>
#include <cstdio>  // jpeglib.h needs it and does not say so
#include <jpeglib.h>

namespace rb::imaging {

/// The codec's error handling. A step of work runs as
///     if (setjmp(errors.giveUp)) return failure;
///     step();
/// and whatever runs in a step has nothing that needs a destructor: a jump leaves it.
struct JpegErrors : jpeg_error_mgr {
    std::jmp_buf giveUp;
    std::array<char, JMSG_LENGTH_MAX> complaint{};

    JpegErrors() : jpeg_error_mgr{} {
        jpeg_std_error(this);
        error_exit = onError;
        output_message = [](j_common_ptr) {};
    }

    [[noreturn]] static void onError(j_common_ptr codec) {
        auto* const self = static_cast<JpegErrors*>(codec->err);
        self->format_message(codec, self->complaint.data());
        std::longjmp(self->giveUp, 1);
    }
};

}  // namespace rb::imaging
