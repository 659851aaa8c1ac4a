#pragma once

// The graphs of a library that is no C++20 yet: its headers are seen by lemongraphs.cpp alone.

#include "graphinputs.h"

enum ELemonGraph
{
    eLG_Lists,
    eLG_Smart, // nodes and arcs in arrays, none is removed
    eLG_Static, // rows, made at once
};

template <ELemonGraph Kind> class LemonGraph
{
public:
    explicit LemonGraph(const SGraphInput& input);
    LemonGraph(const LemonGraph&) = delete;
    LemonGraph& operator=(const LemonGraph&) = delete;
    ~LemonGraph();

    float Query(std::uint32_t from, std::uint32_t to);

private:
    struct SContents;

    std::unique_ptr<SContents> m_contents;
};
