#include "RenderingBase/host/imaging/formats/ImageWriter.h"
namespace rb::imaging {
ReadResult writeJpeg(const WritablePicture&, std::FILE*) { return refuse("a", "b"); }
ReadResult writeJpegFair(const WritablePicture&, std::FILE*) { return refuse("a", "b"); }
ReadResult writeJpegHigh(const WritablePicture&, std::FILE*) { return refuse("a", "b"); }
}  // namespace rb::imaging
