#include "groundwork/tulatesterror.h"

#include "platform/platformerror.h"

#include <utility>

TuLatestError::TuLatestError()
{
    platform::SSystemError error = platform::GetLastSystemError();
    m_number = error.number;
    m_message = std::move(error.text);
}
