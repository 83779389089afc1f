// The declaration of a parameter.
#include "CAudioParamInfo.h"

#include "CAudioParamConverter.h"

namespace qel {

namespace {

constexpr std::uint32_t kVersion = 1;

CError readFlag(CInputStream& stream, bool& flag)
{
    std::uint32_t number = 0;
    QEL_TRY(stream.readU32(number), {});
    flag = number != 0;
    return {};
}

const CAudioParamConverter* findConverter(const CString& name)
{
    const CObject* shared = CObject::sharedObject();
    if (!shared) {
        return nullptr;
    }
    const CString path = name.startsWith("/") ? name.substring(1) : "audio.paramcvt." + name;
    return dynamic_cast<const CAudioParamConverter*>(shared->findObject(path));
}

bool isSeparator(char16_t c)
{
    return c == u'*' || c == u',' || c == u';';
}

} // namespace

CError CAudioParamInfo::parseConverterNames()
{
    const auto elements = static_cast<std::size_t>(esize);
    converters.clear();
    for (const CString& converterName : converterNames) {
        const CAudioParamConverter* converter = findConverter(converterName);
        if (!converter) {
            QEL_FAIL(
                name,
                "@qelstr_CAudioParamInfo_parseConverterNames_ConverterNotFound Audio parameter converter "
                "'%1' not found.",
                converterName);
        }
        converters.push_back(converter);
    }
    if (converters.size() < elements) {
        QEL_FAIL(name,
                 "@qelstr_CAudioParamInfo_parseConverterNames_NotEnoughConverters Not enough converters "
                 "defined %1 (should be %2).",
                 converters.size(), esize);
    }
    converterNames.resize(elements);
    converters.resize(elements);
    return {};
}

CError CAudioParamInfo::convertMinMaxValues(const CString& minText, const CString& maxText)
{
    const auto elements = static_cast<std::size_t>(esize);
    if (isString()) {
        minValues.assign(elements, 0.0);
        maxValues.assign(elements, kMaxStringId);
        return {};
    }
    const std::vector<CString> minWords = minText.splitWords();
    if (minWords.size() < elements) {
        QEL_FAIL(name,
                 "@qelstr_CAudioParamInfo_convertMinMaxValues_NotEnoughMin Not enough minimum values defined "
                 "%1 (should be %2).",
                 minWords.size(), esize);
    }
    convertRange(minWords, minValues);
    const std::vector<CString> maxWords = maxText.splitWords();
    if (maxWords.size() < elements) {
        QEL_FAIL(name,
                 "@qelstr_CAudioParamInfo_convertMinMaxValues_NotEnoughMax Not enough maximum values defined "
                 "%1 (should be %2).",
                 maxWords.size(), esize);
    }
    convertRange(maxWords, maxValues);
    for (std::size_t i = 0; i < elements; ++i) {
        if (maxValues[i] == minValues[i]) {
            QEL_FAIL(
                name,
                "@qelstr_CAudioParamInfo_convertMinMaxValues_Zero Zero default min-max values difference "
                "detected in element %1.",
                i);
        }
    }
    return {};
}

void CAudioParamInfo::convertRange(const std::vector<CString>& words, std::vector<double>& values)
{
    // Unusable text reads as the minimum: of a minimum that is 0, and of a maximum a range without extent,
    // which is refused.
    values.assign(static_cast<std::size_t>(esize), 0.0);
    for (std::int32_t element = 0; element < esize; ++element) {
        const auto i = static_cast<std::size_t>(element);
        values[i] = converters[i]->textToValue(*this, element, words[i], nullptr);
    }
}

CError CAudioParamInfo::parseDefValues(const CString& text)
{
    pool.clear();
    defaults.clear();
    std::size_t group = 0;
    std::int32_t element = 0;
    std::size_t itemStart = 0;
    for (std::size_t position = 0; position <= text.length(); ++position) {
        const char16_t c = position < text.length() ? text[position] : u';';
        if (!isSeparator(c)) {
            continue;
        }
        double value = 0.0;
        if (!convertDefault(text.substring(itemStart, position - itemStart), element, value)) {
            QEL_FAIL(name, "@qelstr_CAudioParamInfo_parseDefValues_Error Default values parsing error.");
        }
        if (group == defaults.size()) {
            defaults.emplace_back();
        }
        defaults[group].push_back(value);
        itemStart = position + 1;
        if (c == u'*') {
            ++element;
            continue;
        }
        if (element != esize - 1) {
            QEL_FAIL(name,
                     "@qelstr_CAudioParamInfo_parseDefValues_NoElements Not enough default elements at pos "
                     "%1.",
                     position);
        }
        element = 0;
        group += c == u';' ? 1 : 0;
    }
    return {};
}

bool CAudioParamInfo::convertDefault(const CString& item, std::int32_t element, double& value)
{
    if (item.isEmpty() || element >= esize) {
        return false;
    }
    if (isString()) {
        value = pool.addString(item);
        return true;
    }
    bool ok = false;
    value = converters[static_cast<std::size_t>(element)]->textToValue(*this, element, item, &ok);
    return ok;
}

CError CAudioParamInfo::load(CInputStream& stream)
{
    CAudioParamInfo loaded;
    QEL_TRY(loaded.loadHead(stream), {});
    QEL_TRY(loaded.loadElements(stream), loaded.name);
    QEL_TRY(loaded.loadDefaults(stream), loaded.name);
    loaded.valid = true;
    *this = std::move(loaded);
    return {};
}

CError CAudioParamInfo::loadHead(CInputStream& stream)
{
    std::uint32_t version = 0;
    QEL_TRY(stream.readU32(version), {});
    if (version != kVersion) {
        QEL_FAIL({}, "@qelstr_CAudioParamInfo_load_VersionError Unsupported data set version %1.", version);
    }
    for (bool* flag : {&isGlobal, &isStorable, &isPersistent, &isDiscrete, &isSingleGroup}) {
        QEL_TRY(readFlag(stream, *flag), {});
    }
    for (CString* text : {&visualName, &name, &paramRegistry}) {
        QEL_TRY(stream.readString(*text), {});
    }
    for (std::int32_t* number : {&esize, &dtype, &reserved}) {
        QEL_TRY(stream.readI32(*number), {});
    }
    const bool isKnown = dtype == kTypeFloat ? esize >= 1 : dtype == kTypeString && esize == 1;
    if (!isKnown) {
        QEL_FAIL(name,
                 "@qelstr_CAudioParamInfo_load_FormatError Unsupported parameter format (esize=%1, "
                 "dtype=%2).",
                 esize, dtype);
    }
    return {};
}

CError CAudioParamInfo::loadElements(CInputStream& stream)
{
    // The lists grow with what is read, so a wrong count ends at the end of the data.
    for (std::int32_t element = 0; element < esize; ++element) {
        QEL_TRY(stream.readString(converterNames.emplace_back()), {});
        QEL_TRY(stream.readF64(minValues.emplace_back()), {});
        QEL_TRY(stream.readF64(maxValues.emplace_back()), {});
    }
    QEL_TRY(parseConverterNames(), {});
    return {};
}

CError CAudioParamInfo::loadDefaults(CInputStream& stream)
{
    std::uint32_t groupCount = 0;
    QEL_TRY(stream.readU32(groupCount), {});
    if (isString()) {
        QEL_TRY(pool.load(stream), {});
    }
    for (std::uint32_t group = 0; group < groupCount; ++group) {
        QEL_TRY(loadGroup(stream, defaults.emplace_back()), {});
    }
    return {};
}

CError CAudioParamInfo::loadGroup(CInputStream& stream, std::vector<double>& group)
{
    std::uint32_t count = 0;
    QEL_TRY(stream.readU32(count), {});
    const std::uint64_t numbers = std::uint64_t{count} * static_cast<std::uint32_t>(esize);
    for (std::uint64_t i = 0; i < numbers; ++i) {
        if (isString()) {
            std::uint32_t id = 0;
            QEL_TRY(stream.readU32(id), {});
            group.push_back(id);
        } else {
            QEL_TRY(stream.readF64(group.emplace_back()), {});
        }
    }
    return {};
}

CError CAudioParamInfo::save(COutputStream& stream) const
{
    if (!valid) {
        QEL_FAIL(name, "@qelstr_CAudioParamInfo_save_Incomplete Incomplete parameter declaration.");
    }
    QEL_TRY(saveHead(stream), name);
    for (std::size_t i = 0; i < converterNames.size(); ++i) {
        QEL_TRY(stream.writeString(converterNames[i]), name);
        QEL_TRY(stream.writeF64(minValues[i]), name);
        QEL_TRY(stream.writeF64(maxValues[i]), name);
    }
    QEL_TRY(saveDefaults(stream), name);
    return {};
}

CError CAudioParamInfo::saveHead(COutputStream& stream) const
{
    QEL_TRY(stream.writeU32(kVersion), {});
    for (const bool flag : {isGlobal, isStorable, isPersistent, isDiscrete, isSingleGroup}) {
        QEL_TRY(stream.writeU32(flag ? 1 : 0), {});
    }
    for (const CString* text : {&visualName, &name, &paramRegistry}) {
        QEL_TRY(stream.writeString(*text), {});
    }
    for (const std::int32_t number : {esize, dtype, reserved}) {
        QEL_TRY(stream.writeI32(number), {});
    }
    return {};
}

CError CAudioParamInfo::saveDefaults(COutputStream& stream) const
{
    QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(defaults.size())), {});
    if (isString()) {
        QEL_TRY(pool.save(stream), {});
    }
    for (const std::vector<double>& group : defaults) {
        QEL_TRY(stream.writeU32(static_cast<std::uint32_t>(group.size() / static_cast<std::size_t>(esize))),
                {});
        for (const double value : group) {
            QEL_TRY(isString() ? stream.writeU32(CAudioParamData::toId(value)) : stream.writeF64(value), {});
        }
    }
    return {};
}

} // namespace qel
