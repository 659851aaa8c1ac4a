#include "groundwork/tuidumpable.h"

#include "groundwork/tustreamwriteasciistring.h"
#include "groundwork/tustreamwriteasciitrace.h"

template <int N> void TuIDumpable<N>::Dump() const
{
    TuStreamWriteASCIITrace trace;
    dump(trace);
}

template <int N> void TuIDumpable<N>::Dump(TuStreamWriteASCII& stream) const
{
    const TuStreamWriteASCII::Passage passage(stream);
    dump(stream);
}

template <int N> CString TuIDumpable<N>::ToString() const
{
    TuStreamWriteASCIIStringT<CString> stream;
    dump(stream);
    return stream.GetText();
}

template class TuIDumpable<1>;
