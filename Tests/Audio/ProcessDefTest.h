// Trees of process definitions for tests.
#pragma once

#include "CCreatorRegistry.h"
#include "Definitions/CAudioProcessBypassStateDef.h"
#include "Definitions/CAudioProcessDef.h"
#include "Definitions/CAudioProcessLinkDef.h"
#include "TestTree.h"

namespace qel::test {

class ProcessDefTest : public ObjectTreeTest
{
protected:
    ProcessDefTest()
    {
        const CCreatorRow table[] = {
            {"audio:process-def", &newObject<CAudioProcessDef>, &CAudioProcessDef::buildClassInfo},
            {"audio:process-link", &newObject<CAudioProcessLinkDef>, &CAudioProcessLinkDef::buildClassInfo},
            {"audio:process-bypass-state", &newObject<CAudioProcessBypassStateDef>,
             &CAudioProcessBypassStateDef::buildClassInfo},
            {},
        };
        releaseError(registerCreators(table));
    }
    ~ProcessDefTest() override { clearCreators(); }

    // The object of this path below the root.
    template <class Class>
    const Class& get(const char* path) const
    {
        const auto* object = dynamic_cast<const Class*>(root_->findObject(path));
        if (!object) {
            ADD_FAILURE() << path << " is missing or of another class";
            std::abort();
        }
        return *object;
    }

    static TreeNode process(const char* name) { return TreeNode("audio:process-def", name); }
    static TreeNode link(const char* src, const char* dst)
    {
        return TreeNode("audio:process-link", "link").attr("src", src).attr("dst", dst);
    }
    static TreeNode state(const char* name)
    {
        return TreeNode("audio:process-bypass-state", name).attr("id", "0").attr("param", "enable");
    }
};

} // namespace qel::test
