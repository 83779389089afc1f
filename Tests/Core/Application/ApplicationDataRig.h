// Stores of one test, and values in them.
#pragma once

#include "CApplicationData.h"
#include "TemporaryHome.h"
#include "TreeFixture.h"

#include <filesystem>
#include <string>
#include <vector>

namespace qel {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

inline CByteBuffer bufferOf(const Bytes& bytes)
{
    return CByteBuffer(std::span(bytes));
}

inline Bytes load(CApplicationData& store, const CString& name,
                  std::uint32_t id = CApplicationData::kAttrList)
{
    CByteBuffer buffer;
    store.loadAppData(name, buffer, id);
    return {buffer.bytes().begin(), buffer.bytes().end()};
}

inline CError save(CApplicationData& store, const CString& name, const Bytes& value)
{
    return store.saveAppData(name, bufferOf(value), nullptr, CApplicationData::kAttrList);
}

inline std::vector<std::string> filesIn(const fs::path& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

class ApplicationData : public ::testing::Test
{
protected:
    test::TemporaryHome home_;
    CGlobalData global_;
    CLocalData local_;
};

} // namespace qel
