#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tuevent.h"

/// How text that comes over the network ends. A source keeps it, for whoever asks after the end.
enum ENetworkEnd
{
    eNE_None, // it goes on
    eNE_Complete, // all that was announced has come
    eNE_Closed, // the other side has closed, as it does after a text whose length it has not stated
    eNE_EarlyClose, // the other side has closed before all that it had announced had come
    eNE_TimedOut, // nothing came, or could be sent, in the time that was given
    eNE_Interrupted, // the stop event was set
    eNE_Failed, // the system says why: the connection was reset, for example
    eNE_HeadTooLarge, // more header bytes or fields than are taken
    eNE_BodyTooLarge,
    eNE_Malformed, // no answer in the sense of HTTP
    eNE_Refused, // the server answers with another status
    eNE_Unsupported, // a coding that is not read
};

/// How it ended, and what the user is told of it.
struct SNetworkEnd
{
    ENetworkEnd kind = eNE_None;
    CString text; // "nothing came for 30 s"; empty where nothing is wrong

    /// Whether all has come, as far as anybody can know.
    bool IsWhole() const { return kind == eNE_Complete || kind == eNE_Closed; }
};

/// How long a connection waits for the other side.
struct SNetworkWait
{
    unsigned int milliseconds = 30'000; // without a byte going or coming
    /// Another thread ends the wait by setting it, within a tenth of a second; outlives the
    /// connection. It is asked often, so let it be a manual one.
    const TuEvent* stop = nullptr;
};
