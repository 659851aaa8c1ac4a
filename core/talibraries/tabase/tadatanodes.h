#pragma once

#include "groundwork/tuboxed.h"
#include "tabase/tadatanode.h"

extern template class TABASE_API TaDataNode<TuBool>;
extern template class TABASE_API TaDataNode<TuChar>;
extern template class TABASE_API TaDataNode<TuInt8>;
extern template class TABASE_API TaDataNode<TuInt16>;
extern template class TABASE_API TaDataNode<TuInt32>;
extern template class TABASE_API TaDataNode<TuLong>;
extern template class TABASE_API TaDataNode<TuInt64>;
extern template class TABASE_API TaDataNode<TuUInt8>;
extern template class TABASE_API TaDataNode<TuUInt16>;
extern template class TABASE_API TaDataNode<TuUInt32>;
extern template class TABASE_API TaDataNode<TuULong>;
extern template class TABASE_API TaDataNode<TuUInt64>;
extern template class TABASE_API TaDataNode<TuFloat32>;
extern template class TABASE_API TaDataNode<TuFloat64>;
extern template class TABASE_API TaDataNode<TuString>;

TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeBool, TuBool);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeChar, TuChar);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeInt8, TuInt8);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeInt16, TuInt16);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeInt32, TuInt32);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeLong, TuLong);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeInt64, TuInt64);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeUInt8, TuUInt8);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeUInt16, TuUInt16);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeUInt32, TuUInt32);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeULong, TuULong);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeUInt64, TuUInt64);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeFloat32, TuFloat32);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeFloat64, TuFloat64);
TA_DECLARE_DATA_NODE(TABASE_API, TaDataNodeString, TuString);
