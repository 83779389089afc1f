// The product as it is delivered, in memory: its tree, its presets, its classes.
#pragma once

#include "../Wrapper/WrapperRig.h"
#include "CAudioParamRegistry.h"
#include "PresetFixture.h"
#include "TemporaryHome.h"

extern "C" const qel::CResourceRow drumfellResourceDirectory[];

namespace qel::test {

// The application with the resources that are built into the library, and stores in a folder of their own.
class ProductFixture : public ::testing::Test
{
protected:
    ProductFixture()
    {
        CApplicationParts parts;
        parts.creators = kCreatorTable;
        parts.resources = drumfellResourceDirectory;
        requireOk(CApplication::start(parts));
    }
    ~ProductFixture() override { CApplication::finish(); }

    static void bringUp(TestHost& host)
    {
        requireOk(host.init());
        requireOk(host.finishInit());
        host.start();
    }
    static CAudioParam& paramOf(TestHost& host, const std::string& name)
    {
        return host.getParams().getParam(CString("plugin.modMain.") + CString(name));
    }

    TemporaryHome home_;
};

} // namespace qel::test
