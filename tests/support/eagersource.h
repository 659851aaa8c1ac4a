#pragma once

#include "tabase/tastreamreadascii.h"

#include <string_view>

/// A text source that reports its end together with its last byte, as a response of a server does.
/// The text must outlive it.
class EagerSource final : public TaStreamReadASCII
{
public:
    explicit EagerSource(std::string_view text)
        : m_rest(text)
    {
    }

private:
    bool read(char& c) override
    {
        if (!m_rest.empty()) {
            c = m_rest.front();
            m_rest.remove_prefix(1);
        }
        return m_rest.empty();
    }

    std::string_view m_rest;
};
