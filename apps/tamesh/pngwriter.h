#pragma once

class TuStreamWriteBinary;

namespace tamesh {

class Image;

/// Writes a whole PNG file, of three bytes per pixel; the same bytes on every system.
///
/// Failure: TuExceptionOutOfMemory; what the stream throws.
void WritePNG(TuStreamWriteBinary& stream, const Image& image);

} // namespace tamesh
