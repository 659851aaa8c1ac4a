#include "tamesh/reporttables.h"

#include "tabase/tagraphnode.h"
#include "tamesh/figurelines.h"
#include "tamesh/htmltext.h"
#include "tamesh/nodeline.h"
#include "tamesh/resultvalues.h"

#include <algorithm>
#include <span>

namespace tamesh {

namespace {

    constexpr std::size_t kMostRows = 200;
    constexpr std::size_t kMostNumbers = 100;
    constexpr int kDeepest = 6;

    std::string format(double number) { return std::string(FormatNumber(number, 0).GetView()); }

    class PartTable
    {
    public:
        explicit PartTable(std::uint32_t vertexCount)
            : m_vertexCount(vertexCount)
        {
        }

        void AddChildren(const TaNode& node, const std::string& lead, int depth)
        {
            for (const TaNode& child : node.GetChildren()) {
                if (m_count > kMostRows) {
                    return;
                }
                if (child.IsSerializable()) {
                    addValue(child, lead);
                } else if (depth < kDeepest) {
                    AddChildren(child, extend(lead, child.GetName()), depth + 1);
                }
            }
        }
        void Finish(HtmlText& html) const
        {
            if (!m_rows.IsEmpty()) {
                html.Mark("<table class=\"values\">\n").Add(m_rows).Mark("</table>\n");
            }
            if (m_count > kMostRows) {
                html.Mark("<p class=\"more\">… and more, which is left out</p>\n");
            }
        }

    private:
        /// Cut, so that a name that is as long as the document is not copied for each of its rows.
        static std::string extend(const std::string& lead, const CString& name)
        {
            constexpr std::size_t kLongest = 1000; // more than is shown
            return lead.size() < kLongest ? lead + name.Left(kLongest).ToUtf8() + " " : lead;
        }
        /// Whether there is room for it.
        bool startRow(const std::string& name)
        {
            if (++m_count > kMostRows) {
                return false;
            }
            m_rows.Mark("<tr><th scope=\"row\">").Text(name).Mark("</th><td>");
            return true;
        }
        void endRow() { m_rows.Mark("</td></tr>\n"); }
        void addRow(const std::string& name, const std::string& value)
        {
            if (startRow(name)) {
                m_rows.Text(value);
                endRow();
            }
        }
        void addNote(const std::string& name, const std::string& note)
        {
            if (startRow(name)) {
                m_rows.Mark("<em class=\"note\">").Text(note).Mark("</em>");
                endRow();
            }
        }
        void addNumbers(const std::string& name, std::span<const std::uint32_t> numbers)
        {
            if (!startRow(name)) {
                return;
            }
            const std::size_t shown = std::min(numbers.size(), kMostNumbers);
            for (const std::uint32_t number : numbers.first(shown)) {
                m_rows.Number(number).Mark(" ");
            }
            if (shown != numbers.size()) {
                m_rows.Mark("<span class=\"more\">… ")
                    .Number(numbers.size() - shown)
                    .Mark(" more</span>");
            }
            endRow();
        }

        void addValue(const TaNode& node, const std::string& lead)
        {
            if (const auto parameters = getValue<TaParameterData>(node); !parameters.IsNull()) {
                addParameters(parameters->GetParameters(), lead, 0);
            } else if (const auto numbers = getValue<TaNumbersData>(node); !numbers.IsNull()) {
                addNumbers(lead + "sizes", numbers->GetNumbers());
            } else if (const auto path = getValue<TaPathData>(node); !path.IsNull()) {
                addPath(*path, lead);
            } else if (const auto distance = getValue<TaDistanceData>(node); !distance.IsNull()) {
                addDistance(*distance, lead);
            } else if (const auto coloring = getValue<TaColoringData>(node); !coloring.IsNull()) {
                addColoring(*coloring, lead);
            } else if (const SNodeLine line = DescribeNode(node); !line.value.empty()) {
                addRow(lead + line.name, line.value);
            }
        }
        template <class Value> static TuSmartPointer<const Value> getValue(const TaNode& node)
        {
            const auto* const found = dynamic_cast<const TaDataNode<Value>*>(&node);
            return found != nullptr ? found->GetData() : TuSmartPointer<const Value>();
        }

        void addParameters(const TaParameterSet& parameters, const std::string& lead, int depth)
        {
            TuArrayManaged<CString> names;
            parameters.GetParameterKeys(names);
            for (unsigned int i = 0; i < names.GetSize() && m_count <= kMostRows; ++i) {
                TuVariant value;
                parameters.GetParameter(names[i], value);
                addRow(lead + names[i].ToUtf8(), value.ToString().ToUtf8());
            }
            parameters.GetGroupNames(names);
            for (unsigned int i = 0; i < names.GetSize() && depth < kDeepest; ++i) {
                addParameters(parameters.GetGroup(names[i]), extend(lead, names[i]), depth + 1);
            }
        }
        void addPath(const TaPathData& data, const std::string& lead)
        {
            const SMeshPath& path = data.GetPath();
            if (!data.Fits(m_vertexCount)) {
                addNote(lead + "vertices", "left out: the path does not fit the mesh");
                return;
            }
            addRow(lead + "vertex count", std::to_string(path.vertices.size()));
            addNumbers(lead + "vertices", path.vertices);
        }
        void addDistance(const TaDistanceData& data, const std::string& lead)
        {
            const std::vector<float>& distances = data.GetDistances();
            if (distances.size() != m_vertexCount) {
                addNote(lead + "distances", "left out: they do not fit the mesh");
                return;
            }
            const auto isReached
                = [](float distance) { return distance != TaGraphNode::GetInitialWeight(); };
            addRow(lead + "vertices reached",
                std::to_string(std::ranges::count_if(distances, isReached)));
            addRow(lead + "unit", format(data.GetUnit()));
        }
        void addColoring(const TaColoringData& data, const std::string& lead)
        {
            if (!data.Fits(m_vertexCount)) {
                addNote(lead + "colours", "left out: they do not fit the mesh");
                return;
            }
            const SColoring& coloring = data.GetColoring();
            addRow(lead + "title", coloring.title);
            addRow(lead + "range", format(coloring.lower) + " to " + format(coloring.upper));
            addRow(lead + "colours", std::to_string(coloring.table->GetCount()));
        }

        const std::uint32_t m_vertexCount;
        HtmlText m_rows;
        std::size_t m_count = 0;
    };

} // namespace

void AddPartTable(HtmlText& html, const TaNode& part, std::uint32_t vertexCount)
{
    PartTable table(vertexCount);
    table.AddChildren(part, {}, 0);
    table.Finish(html);
}

} // namespace tamesh
