#include "tabase/cexception.h"

CException::~CException() = default;
