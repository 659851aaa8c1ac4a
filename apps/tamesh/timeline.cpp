#include "tamesh/timeline.h"

#include "tamesh/figurelines.h"
#include "tamesh/htmltext.h"
#include "tamesh/messagespans.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tamesh {

namespace {

    constexpr std::size_t kMostSpans = 1500;
    constexpr std::size_t kMostLanes = 30;
    constexpr std::size_t kMostTableRows = 400;

    // In pixels.
    constexpr int kAxisHeight = 24;
    constexpr int kNameHeight = 18;
    constexpr int kRowHeight = 16;
    constexpr int kBarHeight = 13;

    using Spans = std::vector<SMessageSpan>;

    double toMilliseconds(std::uint64_t microseconds)
    {
        return static_cast<double>(microseconds) / 1000.0;
    }

    /// With the digits that tell the ticks of an axis apart.
    std::string formatTime(double milliseconds)
    {
        constexpr int kDigits = 9;
        return std::string(FormatNumber(milliseconds, kDigits).GetView());
    }

    /// The part of a session that the spans take, as the width of the drawing.
    class TimeAxis
    {
    public:
        explicit TimeAxis(const Spans& spans)
        {
            m_start = toMilliseconds(spans.front().GetStart());
            double end = m_start;
            for (const SMessageSpan& span : spans) {
                m_start = std::min(m_start, toMilliseconds(span.GetStart()));
                end = std::max(end, toMilliseconds(span.GetEnd()));
            }
            constexpr double kShortest = 0.01;
            m_length = std::max(end - m_start, kShortest);
        }

        /// In percent.
        double GetPlace(double milliseconds) const
        {
            return 100.0 * (milliseconds - m_start) / m_length;
        }
        double GetPlace(std::uint64_t microseconds) const
        {
            return GetPlace(toMilliseconds(microseconds));
        }
        void Draw(HtmlText& html, int height) const
        {
            constexpr int kTicks = 12; // at most
            const double step = getStep(m_length / kTicks);
            const double first = std::ceil(m_start / step);
            for (int i = 0; i < kTicks + 1; ++i) {
                const double time = (first + i) * step;
                const double place = GetPlace(time);
                if (place > 100.0) {
                    break;
                }
                html.Mark("<line class=\"tick\" x1=\"").Place(place).Mark("%\" x2=\"");
                html.Place(place).Mark("%\" y1=\"0\" y2=\"").Number(height).Mark("\"/>");
                html.Mark("<text class=\"time\" dx=\"3\" y=\"12\" x=\"").Place(place);
                html.Mark("%\">").Text(formatTime(time)).Mark(" ms</text>\n");
            }
        }

    private:
        /// The next larger number of 1, 2 or 5 and zeros.
        static double getStep(double least)
        {
            const double power = std::pow(10.0, std::floor(std::log10(least)));
            for (const double factor : { 1.0, 2.0, 5.0 }) {
                if (factor * power >= least) {
                    return factor * power;
                }
            }
            return 10.0 * power;
        }

        double m_start;
        double m_length;
    };

    /// The messages of one handler, in rows so that they do not cover one another.
    struct SLane
    {
        struct SBar
        {
            const SMessageSpan* span;
            std::size_t row;
        };

        std::string name;
        std::vector<SBar> bars;
        std::vector<std::uint64_t> rowEnds;

        void Add(const SMessageSpan& span)
        {
            constexpr std::size_t kMostRows = 12; // what does not fit covers others
            std::size_t row = 0;
            while (row < rowEnds.size() && rowEnds[row] > span.GetStart() && row + 1 < kMostRows) {
                ++row;
            }
            rowEnds.resize(std::max(rowEnds.size(), row + 1));
            rowEnds[row] = std::max(rowEnds[row], span.GetEnd());
            bars.push_back({ &span, row });
        }
        int GetHeight() const
        {
            return kNameHeight + static_cast<int>(rowEnds.size()) * kRowHeight;
        }
    };

    /// Of the first handlers. Counts the messages of the others.
    std::vector<SLane> makeLanes(const Spans& spans, std::size_t& leftOut)
    {
        std::vector<SLane> lanes;
        for (const SMessageSpan& span : spans) {
            auto lane = std::ranges::find(lanes, span.handler, &SLane::name);
            if (lane == lanes.end()) {
                if (lanes.size() == kMostLanes) {
                    ++leftOut;
                    continue;
                }
                lane = lanes.insert(lane, { span.handler, {}, {} });
            }
            lane->Add(span);
        }
        return lanes;
    }

    const std::string& getLabel(const SMessageSpan& span)
    {
        return span.command.empty() ? span.messageClass : span.command;
    }

    std::string_view getHandlerName(std::string_view handler)
    {
        return handler.empty() ? "unknown handler" : handler;
    }

    std::string_view getOutcome(const SMessageSpan& span)
    {
        if (span.isDropped) {
            return "dropped";
        }
        if (span.isPassedOn) {
            return "passed on";
        }
        if (span.ended) {
            return span.isSend ? "answered" : "handled";
        }
        return span.delivered ? "not over" : "waiting";
    }

    void addTime(HtmlText& html, std::optional<std::uint64_t> time)
    {
        if (time) {
            html.Place(toMilliseconds(*time));
        }
    }

    /// Between two times, where both are known, and in their order.
    std::optional<std::uint64_t> getDuration(
        std::optional<std::uint64_t> from, std::optional<std::uint64_t> to)
    {
        return from && to && *from <= *to ? std::optional(*to - *from) : std::nullopt;
    }

    class Drawing
    {
    public:
        Drawing(HtmlText& html, const TimeAxis& axis)
            : m_html(html)
            , m_axis(axis)
        {
        }

        void Add(const SLane& lane)
        {
            m_html.Mark("<rect class=\"lane\" width=\"100%\" y=\"").Number(m_top);
            m_html.Mark("\" height=\"").Number(lane.GetHeight() - 2).Mark("\"/>");
            m_html.Mark("<text class=\"lane\" x=\"4\" y=\"").Number(m_top + 13).Mark("\">");
            m_html.Text(getHandlerName(lane.name)).Mark("</text>\n");
            for (const SLane::SBar& bar : lane.bars) {
                addBar(*bar.span, m_top + kNameHeight + static_cast<int>(bar.row) * kRowHeight);
            }
            m_top += lane.GetHeight();
        }

    private:
        void addBar(const SMessageSpan& span, int top)
        {
            const std::uint64_t start = span.GetStart();
            const std::uint64_t end = span.GetEnd();
            const std::uint64_t begin = std::clamp(span.delivered.value_or(end), start, end);
            m_html.Mark("<g class=\"bar\"><title>");
            m_html.Text(getLabel(span)).Mark("\n").Text(getOutcome(span));
            if (const auto waited = getDuration(span.queued, span.delivered); waited) {
                m_html.Mark(", waited ");
                addTime(m_html, waited);
                m_html.Mark(" ms");
            }
            if (const auto took = getDuration(span.delivered, span.GetEnd()); took) {
                m_html.Mark(", took ");
                addTime(m_html, took);
                m_html.Mark(" ms");
            }
            m_html.Mark("</title>");
            m_html.Mark("<rect class=\"wait\"");
            addBox(start, begin, top);
            m_html.Mark("/><rect class=\"work\"");
            addBox(begin, end, top);
            m_html.Mark("/>");
            addMark(span, top);
            m_html.Mark("<svg");
            addBox(start, end, top);
            m_html.Mark("><text x=\"4\" y=\"10\">")
                .Text(getLabel(span))
                .Mark("</text></svg></g>\n");
        }
        /// Is seen however short the bar is.
        void addMark(const SMessageSpan& span, int top)
        {
            const double place = m_axis.GetPlace(span.isDropped ? span.GetEnd() : span.GetStart());
            if (span.isDropped) {
                m_html.Mark("<line class=\"dropped\" x1=\"");
            } else {
                m_html.Mark("<line class=\"begin\" x1=\"");
            }
            m_html.Place(place).Mark("%\" x2=\"").Place(place).Mark("%\" y1=\"").Number(top);
            m_html.Mark("\" y2=\"").Number(top + kBarHeight).Mark("\"/>");
        }
        void addBox(std::uint64_t start, std::uint64_t end, int top)
        {
            const double left = m_axis.GetPlace(start);
            m_html.Mark(" x=\"").Place(left).Mark("%\" width=\"");
            m_html.Place(m_axis.GetPlace(end) - left).Mark("%\" y=\"").Number(top);
            m_html.Mark("\" height=\"").Number(kBarHeight).Mark("\"");
        }

        HtmlText& m_html;
        const TimeAxis& m_axis;
        int m_top = kAxisHeight;
    };

    void addDrawing(HtmlText& html, const Spans& spans)
    {
        std::size_t leftOut = 0;
        const std::vector<SLane> lanes = makeLanes(spans, leftOut);
        int height = kAxisHeight;
        for (const SLane& lane : lanes) {
            height += lane.GetHeight();
        }
        html.Mark(
            "<div class=\"wide\"><svg id=\"timeline\" role=\"img\" aria-label=\"Messages over "
            "time\" width=\"100%\" height=\"");
        html.Number(height).Mark("\">\n");
        const TimeAxis axis(spans);
        Drawing drawing(html, axis);
        for (const SLane& lane : lanes) {
            drawing.Add(lane);
        }
        axis.Draw(html, height);
        html.Mark("</svg></div>\n");
        if (leftOut != 0) {
            html.Mark("<p class=\"more\">… ").Number(leftOut);
            html.Mark(" more messages, of other handlers</p>\n");
        }
    }

    void addTable(HtmlText& html, const Spans& spans)
    {
        html.Mark("<details><summary>The messages as a table</summary><div class=\"wide\"><table>\n"
                  "<tr><th>message</th><th>class</th><th>command</th><th>handler</th><th>by</th>"
                  "<th>queued, ms</th><th>waited, ms</th><th>took, ms</th><th>outcome</th></tr>\n");
        for (const SMessageSpan& span :
            std::span(spans).first(std::min(spans.size(), kMostTableRows))) {
            html.Mark("<tr><td>").Number(span.messageID).Mark("</td><td>");
            html.Text(span.messageClass).Mark("</td><td>").Text(span.command).Mark("</td><td>");
            html.Text(getHandlerName(span.handler)).Mark("</td><td>");
            html.Text(span.isSend ? "send" : "post").Mark("</td><td class=\"number\">");
            addTime(html, span.queued);
            html.Mark("</td><td class=\"number\">");
            addTime(html, getDuration(span.queued, span.delivered));
            html.Mark("</td><td class=\"number\">");
            addTime(html, getDuration(span.delivered, span.GetEnd()));
            html.Mark("</td><td>").Text(getOutcome(span)).Mark("</td></tr>\n");
        }
        html.Mark("</table></div>\n");
        if (spans.size() > kMostTableRows) {
            html.Mark("<p class=\"more\">… ").Number(spans.size() - kMostTableRows);
            html.Mark(" more</p>\n");
        }
        html.Mark("</details>\n");
    }

} // namespace

void AddTimeline(HtmlText& html, const SMessageHistory& history)
{
    const Spans spans = FindMessageSpans(history, kMostSpans);
    if (spans.empty()) {
        return;
    }
    html.Mark(
        "<p class=\"about\">A bar is light while a message waits, dark while it is handled, and "
        "ends with a thick mark where it was dropped. What was not over when the trace was saved "
        "goes on to its end.</p>\n");
    addDrawing(html, spans);
    if (spans.size() == kMostSpans || history.steps.size() > kMostTracedSteps) {
        html.Mark("<p class=\"more\">The trace goes on; the rest of it is left out.</p>\n");
    }
    addTable(html, spans);
}

} // namespace tamesh
