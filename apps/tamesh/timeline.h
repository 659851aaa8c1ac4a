#pragma once

namespace tamesh {

class HtmlText;
struct SMessageHistory;

/// A message trace as a drawing, with a lane for each handler and a bar for each message, and as a
/// table below it. Both are cut where the trace is long, with a count. Nothing where it is empty.
///
/// The drawing stretches with its width: only heights are in pixels.
void AddTimeline(HtmlText& html, const SMessageHistory& history);

} // namespace tamesh
