// The converters of the shared tree as delivered.
#include "ConverterFixture.h"
#include "TreeCompiler/CTreeCompiler.h"

#include <cmath>

namespace qel {
namespace {

using Mode = CAudioParamConverter::TextMode;

// The delivered tree is compiled and loaded once.
class SharedConvertersTest : public ::testing::Test
{
public:
    static void SetUpTestSuite()
    {
        ASSERT_OK(test::registerConverters());
        tools::CTreeCompiler compiler;
        ASSERT_TRUE(compiler.compile(DRUMFELL_DATA "/SharedData.xml"));
        const std::vector<std::uint8_t> bytes = tools::encodeTree(compiler.root());
        shared_ = new CObject();
        CObject::setSharedObject(shared_);
        CNodeCursor cursor(bytes);
        ASSERT_OK(shared_->loadNode(cursor, true, true, false, false));
    }
    static void TearDownTestSuite()
    {
        CObject::setSharedObject(nullptr);
        CObject::releaseObject(shared_);
        clearCreators();
    }

protected:
    static std::vector<const CAudioParamConverter*> all()
    {
        std::vector<const CAudioParamConverter*> converters;
        const CObject* group = shared_->findObject("audio.paramcvt");
        for (std::size_t i = 0; group && i < group->getChildCount(); ++i) {
            converters.push_back(dynamic_cast<const CAudioParamConverter*>(group->getChild(i)));
        }
        return converters;
    }
    static CString nameOf(const CAudioParamConverter& converter) { return converter.getAttrString("name"); }
    // A declaration of one element with a range that suits the converter.
    static CAudioParamInfo infoOf(const CAudioParamConverter& converter)
    {
        const CString& tag = converter.getTag();
        const bool isRatio = tag == "audio:cvt-ratio";
        const auto* states = dynamic_cast<const CAudioParamConverterEnum*>(&converter);
        const std::size_t lastState = states && states->stateCount() > 0 ? states->stateCount() - 1 : 9;
        CAudioParamInfo info;
        info.dtype = tag == "audio:cvt-text" ? CAudioParamInfo::kTypeString : CAudioParamInfo::kTypeFloat;
        info.converterNames = {nameOf(converter)};
        EXPECT_OK(info.parseConverterNames());
        const CString last = CString::number(static_cast<std::int64_t>(lastState));
        EXPECT_OK(states    ? info.convertMinMaxValues("0", last)
                  : isRatio ? info.convertMinMaxValues("1:1", "20:1")
                            : info.convertMinMaxValues("1", "48"));
        return info;
    }

    static inline CObject* shared_ = nullptr;
};

// Whoever opens a text field and confirms it unchanged must not change what is shown.
TEST_F(SharedConvertersTest, ShowTheSameAfterTheirTextWasTypedIn)
{
    for (const CAudioParamConverter* converter : all()) {
        if (converter->getTag() == "audio:cvt-enum" || converter->getTag() == "audio:cvt-text") {
            continue; // their texts are names, not input
        }
        const CAudioParamInfo info = infoOf(*converter);
        for (int step = 0; step <= 1000; ++step) {
            const double value = converter->normToValue(info, 0, step / 1000.0);
            const CString text = converter->valueToText(info, 0, value, nullptr, Mode::kNormal);
            bool ok = false;
            const double typed = converter->textToValue(info, 0, text, &ok);
            ASSERT_TRUE(ok) << nameOf(*converter).toUtf8() << ' ' << text.toUtf8();
            ASSERT_EQ(converter->valueToText(info, 0, typed, nullptr, Mode::kNormal).toUtf8(), text.toUtf8())
                << nameOf(*converter).toUtf8();
        }
    }
}

} // namespace
} // namespace qel
