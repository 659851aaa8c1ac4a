#pragma once

#include "groundwork/tuelementstream.h"

/// The stored form of a key; the version is that of the set's record.
using TuSetPolicySerializable = TuElementPolicySerializable;
