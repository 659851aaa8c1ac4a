#pragma once

#include "groundwork/groundworkapi.h"

/// The abstract root of the containers: arrays, lists, maps, sets.
template <class T> class GROUNDWORK_TEMPLATE TuContainer
{
public:
    virtual ~TuContainer() = default;

protected:
    TuContainer() = default;
    TuContainer(const TuContainer&) = default;
    TuContainer& operator=(const TuContainer&) = default;
};
