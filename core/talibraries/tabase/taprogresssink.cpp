#include "tabase/taprogresssink.h"

TaProgressSink::~TaProgressSink() = default;
