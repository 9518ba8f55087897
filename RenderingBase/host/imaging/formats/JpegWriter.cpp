// Writing of JPEG files: baseline, JFIF with density, ICC profile in APP2 segments. A sample of the
// format stands in JpegMarkers.cpp.
//
// Sources: ITU-T T.81; T.871 clause 10 (JFIF); ICC.1:2010 annex B.4.

#include "RenderingBase/host/imaging/formats/ImageWriter.h"
#include "RenderingBase/host/imaging/formats/JpegErrors.h"
#include "RenderingBase/host/imaging/formats/RefusalTexts.h"

#include <cmath>
#include <cstdio>
#include <string>

namespace rb::imaging {
namespace {

struct Quality {
    int percent;      ///< As the codec counts.
    bool fullChroma;  ///< Colours at full resolution, not at half of it in both directions.
};

class JpegWriter {
public:
    JpegWriter(const WritablePicture& picture, std::FILE* file, Quality quality)
        : m_picture(picture), m_file(file), m_quality(quality) {
        m_codec.err = &m_errors;
    }
    ~JpegWriter() { jpeg_destroy_compress(&m_codec); }
    JpegWriter(const JpegWriter&) = delete;
    JpegWriter& operator=(const JpegWriter&) = delete;

    ReadResult write() {
        // A piece is numbered with a byte.
        constexpr std::size_t kLargestProfile = 255 * (65533 - 14);
        if (m_picture.profile.size() > kLargestProfile)
            return refuse("a profile of at most 16707345 bytes",
                          bytesText(m_picture.profile.size()));
        if (!attempt())
            return refuse("a picture that can be written as JPEG", m_errors.complaint.data());
        return {};
    }

private:
    // The codec leaves these by a jump: nothing in them may need a destructor.
    bool attempt() {
        if (setjmp(m_errors.giveUp)) return false;
        writeAll();
        return true;
    }
    void writeAll();
    void setDensity();

    const WritablePicture& m_picture;
    std::FILE* m_file;
    Quality m_quality;
    JpegErrors m_errors;
    jpeg_compress_struct m_codec{};
};

void JpegWriter::setDensity() {
    const Resolution& resolution = m_picture.resolution;
    if (resolution.unit != kPerInch && resolution.unit != kPerCentimetre) return;
    const double x = std::round(resolution.x), y = std::round(resolution.y);
    if (!(x >= 1 && x <= 65535 && y >= 1 && y <= 65535)) return;
    m_codec.density_unit = resolution.unit == kPerInch ? 1 : 2;
    m_codec.X_density = static_cast<UINT16>(x);
    m_codec.Y_density = static_cast<UINT16>(y);
}

void JpegWriter::writeAll() {
    jpeg_create_compress(&m_codec);
    jpeg_stdio_dest(&m_codec, m_file);
    m_codec.image_width = static_cast<JDIMENSION>(m_picture.width);
    m_codec.image_height = static_cast<JDIMENSION>(m_picture.height);
    m_codec.input_components = m_picture.channels;
    m_codec.in_color_space = m_picture.channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(&m_codec);
    jpeg_set_quality(&m_codec, m_quality.percent, TRUE);
    if (m_quality.fullChroma)
        m_codec.comp_info[0].h_samp_factor = m_codec.comp_info[0].v_samp_factor = 1;
    setDensity();
    jpeg_start_compress(&m_codec, TRUE);
    if (!m_picture.profile.empty())
        jpeg_write_icc_profile(&m_codec, reinterpret_cast<const JOCTET*>(m_picture.profile.data()),
                               static_cast<unsigned>(m_picture.profile.size()));
    for (int y = 0; y < m_picture.height; ++y) {
        JSAMPROW row = const_cast<JSAMPLE*>(m_picture.row(y));  // the codec only reads it
        jpeg_write_scanlines(&m_codec, &row, 1);
    }
    jpeg_finish_compress(&m_codec);
}

}  // namespace

ReadResult writeJpegFair(const WritablePicture& picture, std::FILE* file) {
    return JpegWriter(picture, file, {50, false}).write();
}

ReadResult writeJpeg(const WritablePicture& picture, std::FILE* file) {
    return JpegWriter(picture, file, {75, false}).write();
}

ReadResult writeJpegHigh(const WritablePicture& picture, std::FILE* file) {
    return JpegWriter(picture, file, {95, true}).write();
}

}  // namespace rb::imaging
