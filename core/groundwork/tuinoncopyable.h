#pragma once

/// A base that says: objects of this class are not copied.
class TuINonCopyable
{
public:
    TuINonCopyable(const TuINonCopyable&) = delete;
    TuINonCopyable& operator=(const TuINonCopyable&) = delete;

protected:
    TuINonCopyable() = default;
    ~TuINonCopyable() = default;
};
