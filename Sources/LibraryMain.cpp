// Start and end of the loaded library, and its two entries.
#include "CApplication.h"
#include "CAudioWrapperVST.h"
#include "CreatorTable.h"
#include "Trace.h"

#ifdef DRUMFELL_OWN_RUNTIME
// The C++ runtime keeps memory for exceptions in times of need and leaves it to the end of the process, which
// a library with a runtime of its own does not wait for.
namespace __gnu_cxx {
void __freeres();
}
#endif

extern "C" const qel::CResourceRow drumfellResourceDirectory[];

namespace {

// Lives from the loading of the library to its unloading. An application that cannot start leaves a library
// whose entry reports the lack.
class CLibrary
{
public:
    CLibrary()
    {
        qel::CApplicationParts parts;
        parts.creators = qel::kCreatorTable;
        parts.resources = drumfellResourceDirectory;
        qel::traceError(qel::CApplication::start(parts));
    }
    ~CLibrary()
    {
        qel::CApplication::finish();
#ifdef DRUMFELL_OWN_RUNTIME
        __gnu_cxx::__freeres();
#endif
    }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
};

const CLibrary theLibrary;

} // namespace

#ifdef _WIN32
#define QEL_EXPORT __declspec(dllexport)
#else
#define QEL_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

QEL_EXPORT AEffect* VSTPluginMain(AudioMasterCallback audioMaster);

// The entry's older name. A compiler takes no function of this kind under that name, the linker does.
QEL_EXPORT AEffect* olderPluginMain(AudioMasterCallback audioMaster) __asm__("main");

AEffect* VSTPluginMain(AudioMasterCallback audioMaster)
{
    return qel::createEffect(audioMaster);
}

AEffect* olderPluginMain(AudioMasterCallback audioMaster)
{
    return qel::createEffect(audioMaster);
}
}
