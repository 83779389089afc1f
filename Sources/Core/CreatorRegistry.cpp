// The process-wide map from tag to class.
#include "CreatorRegistry.h"

#include "CObject.h"

#include <memory>

namespace qel {

namespace {

struct Creator
{
    CObject* (*create)();
    std::unique_ptr<CClassInfo> classInfo;
};

CStringMap<Creator>& registry()
{
    static CStringMap<Creator> instance;
    return instance;
}

} // namespace

CError registerCreator(const CCreatorRow& row)
{
    auto info = std::make_unique<CClassInfo>();
    row.buildClassInfo(*info);
    if (!registry().try_emplace(row.tag, Creator{row.create, std::move(info)}).second) {
        QEL_FAIL({}, "@qelstr_CObject_registerCreator Creator for '%1' has already been registered.",
                 row.tag);
    }
    return {};
}

CError registerCreators(const CCreatorRow* table)
{
    for (; table->tag; ++table) {
        QEL_TRY(registerCreator(*table), {});
    }
    return {};
}

CObject* createRegistered(const CString& tag)
{
    const auto entry = registry().find(tag);
    if (entry == registry().end()) {
        return nullptr;
    }
    CObject* object = entry->second.create();
    object->setClassInfo(*entry->second.classInfo);
    return object;
}

void clearCreators()
{
    registry().clear();
}

} // namespace qel
