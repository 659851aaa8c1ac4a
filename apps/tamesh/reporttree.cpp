#include "tamesh/reporttree.h"

#include "tabase/tanode.h"
#include "tamesh/htmltext.h"
#include "tamesh/nodeline.h"

namespace tamesh {

namespace {

    constexpr int kDeepest = 24;
    constexpr int kOpen = 2; // levels that are open at first
    constexpr std::uint32_t kMostChildren = 200;
    constexpr std::uint32_t kMostNodes = 3000;

    class TreeElements
    {
    public:
        explicit TreeElements(HtmlText& html)
            : m_html(html)
        {
        }

        void Add(const TaNode& node, int depth)
        {
            ++m_count;
            if (!node.HasChildren()) {
                m_html.Mark("<div class=\"leaf\">");
                addLine(node);
                m_html.Mark("</div>\n");
                return;
            }
            m_html.Mark("<details");
            if (depth < kOpen) {
                m_html.Mark(" open");
            }
            m_html.Mark("><summary>");
            addLine(node);
            m_html.Mark("</summary>\n");
            addChildren(node, depth + 1);
            m_html.Mark("</details>\n");
        }

    private:
        void addLine(const TaNode& node)
        {
            const SNodeLine line = DescribeNode(node);
            m_html.Mark("<b>").Text(line.name).Mark("</b> <i>").Text(line.className).Mark("</i>");
            if (!line.value.empty()) {
                m_html.Mark(" <span>").Text(line.value).Mark("</span>");
            }
        }
        void addChildren(const TaNode& node, int depth)
        {
            std::uint32_t left = node.GetChildrenCount();
            std::uint32_t shown = 0;
            for (const TaNode& child : node.GetChildren()) {
                if (depth > kDeepest || shown == kMostChildren || m_count >= kMostNodes) {
                    break;
                }
                Add(child, depth);
                ++shown;
                --left;
            }
            if (left != 0) {
                m_html.Mark("<div class=\"more\">… ").Number(left).Mark(" more</div>\n");
            }
        }

        HtmlText& m_html;
        std::uint32_t m_count = 0;
    };

} // namespace

void AddTree(HtmlText& html, const TaNode& root) { TreeElements(html).Add(root, 0); }

} // namespace tamesh
