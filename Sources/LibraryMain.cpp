// Start and end of the loaded library.
#include "CApplication.h"
#include "CreatorTable.h"
#include "CTrace.h"

extern "C" const qel::CResourceRow drumfellResourceDirectory[];

namespace {

// Lives from the loading of the library to its unloading. An application that cannot start leaves a library whose entry
// reports the lack.
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
    ~CLibrary() { qel::CApplication::finish(); }
    CLibrary(const CLibrary&) = delete;
    CLibrary& operator=(const CLibrary&) = delete;
};

const CLibrary theLibrary;

} // namespace
