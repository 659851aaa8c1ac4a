#pragma once

/// Will keep the books of the regions of a graph. So far it has none.
class TaGraphRegionManager
{
};
