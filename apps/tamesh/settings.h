#pragma once

#include "tabase/taclassparameterset.h"
#include "tabase/taparameterset.h"

#include <string>
#include <string_view>

namespace tamesh {

/// What the user can set. Values that were set are remembered for later runs, as persistent options
/// of the user.
///
/// Failure: std::invalid_argument with what the user is told, for an assignment that makes no
///          sense; nothing has changed then.
class Settings
{
public:
    /// Where the values are remembered, below the roots of the current user.
    static constexpr const char16_t* kKey = u"Software\\TaBase\\tamesh\\Settings";

    /// The usual values.
    Settings();

    /// Takes what was remembered, but for what does not lie in its limits.
    void Recall();
    /// "NAME=VALUE"; without VALUE, the usual one.
    void Assign(std::string_view assignment);
    /// Keeps what has been assigned; false where it cannot be kept.
    [[nodiscard]] bool Remember() const;

    /// Significant digits of coordinates; 0 for as many as tell them from all others.
    int GetDigits() const { return get(u"digits").ToInt(); }
    /// How deep data trees are shown.
    int GetTreeDepth() const { return get(u"tree-depth").ToInt(); }
    /// In milliseconds.
    unsigned int GetNetworkTimeout() const
    {
        return static_cast<unsigned int>(get(u"timeout").ToInt()) * 1000;
    }
    bool IsProgressShown() const { return get(u"progress").ToBool(); }

    /// A line for each setting: its name, value, limits, and what it is.
    std::string Describe() const;

private:
    TuVariant get(TaParameterSet::Name name) const;

    TaParameterSet m_values;
    TaParameterSet m_assigned;
};

} // namespace tamesh
