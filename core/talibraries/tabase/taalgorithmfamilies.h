#pragma once

#include "tabase/taalgorithm.h"

/// The two families of algorithms: bases that add nothing but their type identity.

class TABASE_API TaFtAlgorithm : public TaAlgorithm
{
    TU_DECLARE_RTTI
};

class TABASE_API TaMpAlgorithm : public TaAlgorithm
{
    TU_DECLARE_RTTI
};
