#include "tamesh/treelines.h"

#include "tabase/tanode.h"
#include "tamesh/displaytext.h"

#include <sstream>
#include <string_view>
#include <vector>

namespace tamesh {

namespace {

    /// Of a line of a dump; the top has depth 0.
    int getDepth(std::string_view line)
    {
        for (int depth = 1; line.size() >= 4; ++depth) {
            const std::string_view lead = line.substr(0, 4);
            if (lead == " |--") {
                return depth;
            }
            if (lead != " |  " && lead != "    ") {
                break;
            }
            line.remove_prefix(4);
        }
        return 0;
    }

} // namespace

std::string FormatTree(const TaNode& root, int depth)
{
    // The lines of a dump grow with the depth, which costs little in a file.
    constexpr std::size_t kDeepest = 40;
    std::vector<TaNode::ConstChildrenIterator> open{ root.GetChildren() };
    while (!open.empty()) {
        if (open.size() > kDeepest) {
            return "  (the data tree is too deep to be shown)\n";
        }
        if (!open.back()) {
            open.pop_back();
        } else {
            const TaNode& child = *open.back();
            ++open.back();
            open.push_back(child.GetChildren());
        }
    }
    std::istringstream lines(root.ToString().ToUtf8());
    std::string text;
    for (std::string line; std::getline(lines, line);) {
        if (getDepth(line) <= depth) {
            text += "  " + MakeDisplayText(line) + "\n";
        }
    }
    return text;
}

} // namespace tamesh
