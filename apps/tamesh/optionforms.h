#pragma once

#include "tamesh/pictureoptions.h"

#include <CLI/CLI.hpp>

#include <map>
#include <string>

namespace tamesh {

// Forms of options that the command line and the commands of a session have in common.

/// Accepts file names with this ending only: a mesh must not be overwritten with a document.
inline CLI::Validator EndingWith(const std::string& ending)
{
    return CLI::Validator(
        [ending](std::string& name) {
            const bool ends = name.size() > ending.size() && name.ends_with(ending);
            return ends ? std::string() : "the name does not end in " + ending + ": " + name;
        },
        "FILE" + ending);
}

/// Accepts what the function makes something of.
template <class Parse> CLI::Validator ParsedBy(Parse&& parse, const std::string& form)
{
    return CLI::Validator(
        [parse, form](std::string& text) {
            return parse(text) ? std::string() : "no " + form + " that can be taken: " + text;
        },
        form);
}

/// `--view`, `--up` and `--size`.
///
/// Ownership: outlives the parser that it has added options to.
class PictureForm
{
public:
    PictureForm() = default;
    PictureForm(const PictureForm&) = delete;
    PictureForm& operator=(const PictureForm&) = delete;

    void AddTo(CLI::App& command)
    {
        command.add_option("--view", m_view, "direction from which the mesh is seen, X,Y,Z")
            ->check(ParsedBy(ParseDirection, "X,Y,Z"))
            ->capture_default_str();
        AddAxisTo(command);
        command.add_option("--size", m_size, "in pixels, 200x150 to 4000x4000")
            ->check(ParsedBy(ParseSize, "WxH"))
            ->capture_default_str();
    }
    void AddAxisTo(CLI::App& command)
    {
        command.add_option("--up", m_up, "axis that points upward, and along which heights go")
            ->check(CLI::IsMember(m_axes))
            ->capture_default_str();
    }
    SPictureOptions Get() const
    {
        return { *ParseSize(m_size), *ParseDirection(m_view), m_axes.at(m_up) };
    }

private:
    const std::map<std::string, EAxis> m_axes{ { "x", eA_X }, { "y", eA_Y }, { "z", eA_Z } };
    std::string m_view = "1,-2,1.5";
    std::string m_up = "z";
    std::string m_size = "1200x900";
};

} // namespace tamesh
