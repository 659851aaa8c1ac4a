#include "tabase/tafilesystem.h"

#include "groundwork/tucondition.h"
#include "groundwork/tucriticalsection.h"
#include "groundwork/tumap.h"
#include "platform/platformfile.h"
#include "platform/platformfolders.h"

namespace {

/// What has been set, by number. Never destroyed: recordings may be made until the end.
struct SSetDirectories
{
    TuCriticalSection lock;
    TuMap<unsigned int, CString> paths TU_GUARDED_BY(lock);
};

SSetDirectories& getSetDirectories()
{
    static SSetDirectories& s_directories = *new SSetDirectories();
    return s_directories;
}

CString withSeparator(const CString& path)
{
    const char16_t separator = platform::GetPathSeparator();
    // No path at all must not become the root.
    const bool has = path.IsEmpty() || path[path.GetLength() - 1] == separator;
    return has ? path : CString(path).Append(std::u16string_view(&separator, 1));
}

CString getDefaultDirectory(unsigned int number)
{
    switch (number) {
    case TaFileSystem::eSD_Temporary:
        return platform::GetTemporaryFolder();
    case TaFileSystem::eSD_UserSettings:
        return platform::GetUserConfigFolder();
    case TaFileSystem::eSD_Program: {
        const CString program = platform::GetProgramPath();
        return program.Left(program.GetView().find_last_of(platform::GetPathSeparator()) + 1);
    }
    default:
        return TaFileSystem::GetSystemPath(
            withSeparator(platform::GetUserConfigFolder()) + u"tabase\\unittests");
    }
}

void checkNumber(unsigned int number)
{
    TuPreCondition<2>(u"there is a special directory of this number", TU_HERE, [number] {
        return number == TaFileSystem::eSD_Temporary || number == TaFileSystem::eSD_UserSettings
            || number == TaFileSystem::eSD_Program || number == TaFileSystem::eSD_UnitTests;
    });
}

} // namespace

CString TaFileSystem::GetSpecialDirectory(unsigned int number)
{
    checkNumber(number);
    SSetDirectories& directories = getSetDirectories();
    CString path;
    {
        const TuCriticalSectionAuto guard(directories.lock);
        directories.paths.Lookup(number, path);
    }
    return withSeparator(path.IsEmpty() ? getDefaultDirectory(number) : path);
}

void TaFileSystem::SetSpecialDirectory(unsigned int number, const CString& path)
{
    checkNumber(number);
    SSetDirectories& directories = getSetDirectories();
    const TuCriticalSectionAuto guard(directories.lock);
    directories.paths.SetAt(number, path);
}

CString TaFileSystem::GetSystemPath(const CString& path) { return platform::ToSystemPath(path); }
