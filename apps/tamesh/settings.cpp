#include "tamesh/settings.h"

#include "tabase/tapersistentoptions.h"

#include <charconv>
#include <stdexcept>

namespace tamesh {

namespace {

    constexpr auto kCategory = TaPersistentOptions::ePOC_CurrentUser;
    constexpr auto kMinimum = TaClassParameterSet::eConstraintMinimum;
    constexpr auto kMaximum = TaClassParameterSet::eConstraintMaximum;

    /// The texts that the description refers to by number.
    enum EText : unsigned int
    {
        eT_Digits = 1,
        eT_Progress,
        eT_Timeout,
        eT_TreeDepth,
    };

    std::string_view getText(unsigned long id)
    {
        switch (id) {
        case eT_Digits:
            return "significant digits of coordinates, 0 for as many as they need";
        case eT_Progress:
            return "whether long work shows how far it is";
        case eT_Timeout:
            return "how many seconds the other side of a connection is waited for";
        case eT_TreeDepth:
            return "how many levels of a document's data tree are shown";
        default:
            return {};
        }
    }

    TaClassParameterSet makeDescription()
    {
        TaClassParameterSet description;
        const auto add = [&](const char16_t* name, const TuVariant& usual, EText text) {
            description.SetParameter(name, usual);
            description.SetDescriptionID(name, text);
        };
        const auto limit = [&](const char16_t* name, int minimum, int maximum) {
            description.SetConstraint(name, kMinimum, minimum);
            description.SetConstraint(name, kMaximum, maximum);
        };
        add(u"digits", 0, eT_Digits);
        limit(u"digits", 0, 17);
        add(u"progress", true, eT_Progress);
        add(u"timeout", 30, eT_Timeout);
        limit(u"timeout", 1, 3600);
        add(u"tree-depth", 40, eT_TreeDepth);
        limit(u"tree-depth", 0, 40); // the lines of a tree grow with the depth
        return description;
    }

    const TaClassParameterSet& getDescription()
    {
        static const TaClassParameterSet s_description = makeDescription();
        return s_description;
    }

    TuVariant getUsual(const CString& name)
    {
        TuVariant value;
        getDescription().GetParameter(name, value);
        return value;
    }

    std::string format(const TuVariant& value) { return value.ToString().ToUtf8(); }

    std::string formatLimits(const CString& name)
    {
        const TaClassParameterSet& description = getDescription();
        return !description.HasConstraint(name, kMinimum)
            ? "true or false"
            : format(description.GetConstraint(name, kMinimum)) + " to "
                + format(description.GetConstraint(name, kMaximum));
    }

    /// A value of the kind that the setting has.
    TuVariant parse(const CString& name, std::string_view text)
    {
        if (getUsual(name).GetType() == TuVariant::eVT_Bool) {
            if (text == "true" || text == "false") {
                return text == "true";
            }
        } else {
            int number = 0;
            const auto [end, error] = std::from_chars(text.begin(), text.end(), number);
            if (error == std::errc() && end == text.end()
                && getDescription().IsInLimits(name, number)) {
                return number;
            }
        }
        throw std::invalid_argument("the setting " + name.ToUtf8() + " is " + formatLimits(name)
            + ", not '" + std::string(text) + "'");
    }

    std::string pad(std::string text, std::size_t width)
    {
        text.resize(std::max(width, text.size()), ' ');
        return text;
    }

} // namespace

Settings::Settings()
{
    for (const auto& [name, value] : getDescription().GetParameters()) {
        m_values.SetParameter(name, value);
        for (const auto kind : { kMinimum, kMaximum }) {
            if (getDescription().HasConstraint(name, kind)) {
                m_values.SetConstraint(name, TaParameterSet::EParameterConstraint(kind),
                    getDescription().GetConstraint(name, kind));
            }
        }
    }
}

TuVariant Settings::get(TaParameterSet::Name name) const
{
    TuVariant value;
    m_values.GetParameter(name, value);
    return value;
}

void Settings::Recall()
{
    for (const auto& [name, usual] : getDescription().GetParameters()) {
        TuVariant value = usual;
        if (usual.GetType() == TuVariant::eVT_Bool) {
            bool isSet = usual.ToBool();
            TaPersistentOptions::ReadOption(kKey, name, isSet, kCategory);
            value = isSet;
        } else {
            TaPersistentOptions::ReadOption(kKey, name, value, TuVariant::eVT_Int32, kCategory);
        }
        if (m_values.IsInLimits(name, value)) {
            m_values.SetParameter(name, value);
        }
    }
}

void Settings::Assign(std::string_view assignment)
{
    const std::size_t sign = assignment.find('=');
    const CString name = CString::FromUtf8(assignment.substr(0, sign));
    if (sign == assignment.npos) {
        throw std::invalid_argument("'" + std::string(assignment) + "' is not NAME=VALUE");
    }
    if (!getDescription().HasParameter(name)) {
        throw std::invalid_argument(
            "there is no setting '" + name.ToUtf8() + "'; tamesh help-settings shows them");
    }
    const std::string_view text = assignment.substr(sign + 1);
    const TuVariant value = text.empty() ? getUsual(name) : parse(name, text);
    m_values.SetParameter(name, value);
    m_assigned.SetParameter(name, value);
}

bool Settings::Remember() const
{
    bool isKept = true;
    for (const auto& [name, value] : m_assigned.GetParameters()) {
        const int written = value.GetType() == TuVariant::eVT_Bool
            ? TaPersistentOptions::WriteOption(kKey, name, value.ToBool(), kCategory)
            : TaPersistentOptions::WriteOption(kKey, name, value, kCategory);
        isKept = isKept && written != 0;
    }
    return isKept;
}

std::string Settings::Describe() const
{
    TuArrayManaged<CString> names;
    m_values.GetParameterKeys(names);
    std::string text;
    for (const CString& name : names) {
        text += "  " + pad(name.ToUtf8(), 12) + pad(format(get(name)), 7)
            + pad("(" + formatLimits(name) + ")", 17)
            + std::string(getText(getDescription().GetDescriptionID(name))) + "\n";
    }
    return text;
}

} // namespace tamesh
