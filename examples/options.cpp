// What a program remembers of its user: the width of a window and the folder that was open last.
//
// Everything lies under a key of the example's own, which it removes at the end.

#include "platform/platformregistry.h"
#include "tabase/tapersistentoptions.h"

#include <iostream>

namespace {

constexpr auto kUser = TaPersistentOptions::ePOC_CurrentUser;
constexpr const char16_t* kKey = u"Software\\TaBaseExample\\View";
constexpr unsigned long kLongestFolder = 1000;

struct SView
{
    int width = 60;
    CString folder = u"Documents";
};

/// What was stored last, by whichever process; what was never stored stays as it is.
SView load()
{
    SView view;
    TaPersistentOptions::ReadOption(kKey, u"Width", view.width, kUser);
    TaPersistentOptions::ReadOption(kKey, u"Folder", view.folder, kLongestFolder, kUser);
    return view;
}

/// False where the store refuses: a full disk, say, or a folder that nobody may write to.
bool save(const SView& view)
{
    return TaPersistentOptions::WriteOption(kKey, u"Width", view.width, kUser) == 1
        && TaPersistentOptions::WriteOption(kKey, u"Folder", view.folder, kUser) == 1;
}

} // namespace

int main()
{
    SView view = load();
    std::cout << "at first: " << view.width << ", " << view.folder.ToUtf8() << '\n';

    view.width = 80;
    view.folder = u"Meshes";
    if (!save(view)) {
        std::cerr << "options: the settings could not be stored\n";
        return 1;
    }
    const SView again = load();
    std::cout << "stored:   " << again.width << ", " << again.folder.ToUtf8() << '\n';

    // Options themselves are never removed by a program; whoever uninstalls it does so.
    const bool isRemoved
        = platform::RemoveRegistryKey(platform::eRo_CurrentUser, u"Software\\TaBaseExample");
    return isRemoved && again.width == 80 && load().width == 60 ? 0 : 1;
}
