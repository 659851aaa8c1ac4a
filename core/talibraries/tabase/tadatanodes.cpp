#include "tabase/tadatanodes.h"

template class TaDataNode<TuBool>;
template class TaDataNode<TuChar>;
template class TaDataNode<TuInt8>;
template class TaDataNode<TuInt16>;
template class TaDataNode<TuInt32>;
template class TaDataNode<TuLong>;
template class TaDataNode<TuInt64>;
template class TaDataNode<TuUInt8>;
template class TaDataNode<TuUInt16>;
template class TaDataNode<TuUInt32>;
template class TaDataNode<TuULong>;
template class TaDataNode<TuUInt64>;
template class TaDataNode<TuFloat32>;
template class TaDataNode<TuFloat64>;
template class TaDataNode<TuString>;

TA_DEFINE_DATA_NODE(TaDataNodeBool, TuBool)
TA_DEFINE_DATA_NODE(TaDataNodeChar, TuChar)
TA_DEFINE_DATA_NODE(TaDataNodeInt8, TuInt8)
TA_DEFINE_DATA_NODE(TaDataNodeInt16, TuInt16)
TA_DEFINE_DATA_NODE(TaDataNodeInt32, TuInt32)
TA_DEFINE_DATA_NODE(TaDataNodeLong, TuLong)
TA_DEFINE_DATA_NODE(TaDataNodeInt64, TuInt64)
TA_DEFINE_DATA_NODE(TaDataNodeUInt8, TuUInt8)
TA_DEFINE_DATA_NODE(TaDataNodeUInt16, TuUInt16)
TA_DEFINE_DATA_NODE(TaDataNodeUInt32, TuUInt32)
TA_DEFINE_DATA_NODE(TaDataNodeULong, TuULong)
TA_DEFINE_DATA_NODE(TaDataNodeUInt64, TuUInt64)
TA_DEFINE_DATA_NODE(TaDataNodeFloat32, TuFloat32)
TA_DEFINE_DATA_NODE(TaDataNodeFloat64, TuFloat64)
TA_DEFINE_DATA_NODE(TaDataNodeString, TuString)
