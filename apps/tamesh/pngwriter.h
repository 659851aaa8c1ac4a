#pragma once

class TuStreamWriteBinary;

namespace tamesh {

class Image;

/// Writes a whole PNG file, of three bytes per pixel.
///
/// Failure: TuExceptionPreconditionViolation for one without pixels; TuExceptionOutOfMemory; what
/// the stream throws.
void WritePNG(TuStreamWriteBinary& stream, const Image& image);

} // namespace tamesh
