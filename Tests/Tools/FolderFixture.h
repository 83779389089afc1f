// What the tool tests share.
#pragma once

#include "TemporaryFolder.h"
#include "TreeCompiler/CTreeCompiler.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

namespace qel::tools {

// A folder of its own for each test, removed behind it.
class FolderFixture : public ::testing::Test
{
protected:
    std::string write(const std::string& name, std::string_view text) const
    {
        const auto path = folder_ / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return path.string();
    }
    // All messages, one a line, with file names relative to the folder.
    std::string messages(const std::string& file) const
    {
        CTreeCompiler compiler;
        compiler.compile(file);
        std::string text;
        for (const CDiagnostic& diagnostic : compiler.diagnostics()) {
            text += diagnostic.text() + "\n";
        }
        const std::string prefix = folder_.string() + "/";
        for (std::size_t at = text.find(prefix); at != text.npos; at = text.find(prefix)) {
            text.erase(at, prefix.size());
        }
        return text;
    }
    CTreeNode compiled(const std::string& file) const
    {
        CTreeCompiler compiler;
        EXPECT_TRUE(compiler.compile(file)) << messages(file);
        return compiler.root();
    }

private:
    test::TemporaryFolder temporary_;

protected:
    const std::filesystem::path& folder_ = temporary_.root();
};

} // namespace qel::tools
