#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tuvariant.h"
#include "tabase/tabaseapi.h"

/// Small settings of a user or a machine that outlive the program: a value under a category, a key
/// path and a name, in the registry of the system, or what stands for it (docs/options.md).
///
///     TaPersistentOptions::WriteOption(u"Software\\Mine", u"Width", 80, ePOC_CurrentUser);
///     int width = 60;
///     TaPersistentOptions::ReadOption(u"Software\\Mine", u"Width", width, ePOC_CurrentUser);
///
/// Nothing is kept: each operation reads or writes the store. Key paths have their parts separated
/// by "\", with none in front; they and names ignore case.
///
/// The type that a value was written with does not count when it is read: a number takes the first
/// four bytes, and keeps its own where there are fewer; a text takes all bytes as UTF-16. Texts
/// are stored without a terminator, and read up to the first zero unit.
///
/// Threads: any; several processes may use the same values, too.
/// Failure: 0, and 1 for success. A read that fails leaves its target as it was: no such value, or
///          one that is larger than the target. TuException for a kind of variant that is not
///          offered, whatever the store holds.
class TABASE_API TaPersistentOptions
{
public:
    /// The root of the registry. Any other number is none: all operations fail.
    enum EPersistentOptionsCategory : int
    {
        ePOC_ClassesRoot = 0,
        ePOC_CurrentUser = 1,
        ePOC_LocalMachine = 2,
        ePOC_Users = 3,
        ePOC_CurrentConfig = 4,
    };

    /// True only where the number is 1.
    static int ReadOption(
        const CString& key, const CString& name, bool& value, EPersistentOptionsCategory category);
    static int ReadOption(
        const CString& key, const CString& name, int& value, EPersistentOptionsCategory category);
    static int ReadOption(const CString& key, const CString& name, unsigned int& value,
        EPersistentOptionsCategory category);
    /// 32 bits, also where an `unsigned long` has more.
    static int ReadOption(const CString& key, const CString& name, unsigned long& value,
        EPersistentOptionsCategory category);
    /// A text of at most `maxChars` units.
    static int ReadOption(const CString& key, const CString& name, CString& value,
        unsigned long maxChars, EPersistentOptionsCategory category);
    /// Kinds 1 and 2 are read as a number of kind 2, 4 as one of kind 4; 5, 6 and 8 as a wide text
    /// of at most 1024 units.
    static int ReadOption(const CString& key, const CString& name, TuVariant& value,
        TuVariant::EVariantType kind, EPersistentOptionsCategory category);

    static int WriteOption(
        const CString& key, const CString& name, bool value, EPersistentOptionsCategory category);
    static int WriteOption(
        const CString& key, const CString& name, int value, EPersistentOptionsCategory category);
    static int WriteOption(const CString& key, const CString& name, unsigned int value,
        EPersistentOptionsCategory category);
    /// The low 32 bits.
    static int WriteOption(const CString& key, const CString& name, unsigned long value,
        EPersistentOptionsCategory category);
    static int WriteOption(const CString& key, const CString& name, const CString& value,
        EPersistentOptionsCategory category);
    /// Pointers are texts here, or nothing: each would otherwise become a bool.
    static int WriteOption(const CString& key, const CString& name, const char16_t* value,
        EPersistentOptionsCategory category);
    static int WriteOption(const CString& key, const CString& name, const wchar_t* value,
        EPersistentOptionsCategory category);
    template <class T>
    static int WriteOption(const CString& key, const CString& name, const T* value,
        EPersistentOptionsCategory category)
        = delete;
    /// Kinds 2, 4 and 8 only.
    static int WriteOption(const CString& key, const CString& name, const TuVariant& value,
        EPersistentOptionsCategory category);
};
