// The product as it is delivered, in memory: its tree, its presets, its classes.
#pragma once

#include "../Wrapper/WrapperRig.h"
#include "CAudioParamRegistry.h"
#include "PresetInstance.h"
#include "TemporaryHome.h"

extern "C" const qel::CResourceRow drumfellResourceDirectory[];

namespace qel::test {

// The application with the resources that are built into the library, and stores in a folder of their own.
class ProductTest : public ::testing::Test
{
protected:
    ProductTest()
    {
        CApplicationParts parts;
        parts.creators = kCreatorTable;
        parts.resources = drumfellResourceDirectory;
        requireOk(CApplication::start(parts));
    }
    ~ProductTest() override { CApplication::finish(); }

    static void bringUp(TestHost& host)
    {
        requireOk(host.init());
        requireOk(host.finishInit());
        host.start();
    }
    static CAudioParamRegistry& registryOf(TestHost& host, const char* name)
    {
        return dynamic_cast<CAudioParamRegistry&>(*host.getRoot()->findObject(CString("plugin.") + name));
    }
    static CAudioParam& paramOf(TestHost& host, const std::string& name)
    {
        return host.getParams().getParam(CString("plugin.modMain.") + CString(name));
    }
    // What a user would type to get the present value of group 0; the number of a state.
    static double typed(TestHost& host, const std::string& name, const std::string& text)
    {
        const CAudioParamInfo& info = paramOf(host, name).getInfo();
        return info.converters[0]->textToValue(info, 0, CString(text), nullptr);
    }
    static std::vector<double> numbersOf(const CAudioParam& param)
    {
        const auto values = param.getCurrent().getValues(0);
        return {values.begin(), values.end()};
    }
    static std::vector<std::string> textsOf(const CAudioParam& param)
    {
        std::vector<std::string> texts;
        for (const double id : param.getCurrent().getValues(0)) {
            texts.push_back(param.getCurrent().getPool().getString(id).toUtf8());
        }
        return texts;
    }

    TemporaryHome home_;
};

} // namespace qel::test
