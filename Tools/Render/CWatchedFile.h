// A file for the audio library that remembers whether all that was written got there.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>

#include <sndfile.h>

namespace qel::tools {

// The library's coders write what they hold back when they close the file, and tell nobody if that fails. So
// they write through this, which knows. One thread; outlives the library's handle.
class CWatchedFile
{
public:
    // Creates the file or empties it. isOpen() is false if that failed; errno says why.
    explicit CWatchedFile(const std::filesystem::path& path)
        : file_(std::fopen(path.c_str(), "w+b"), &std::fclose)
    {}

    bool isOpen() const { return file_ != nullptr; }
    // For SndfileHandle, with this object as its user data.
    static SF_VIRTUAL_IO& access();
    // False if anything since the beginning did not reach the file.
    bool close();

private:
    static CWatchedFile& of(void* self) { return *static_cast<CWatchedFile*>(self); }
    static sf_count_t length(void* self);
    static sf_count_t seek(sf_count_t offset, int whence, void* self);
    static sf_count_t read(void* target, sf_count_t count, void* self);
    static sf_count_t write(const void* source, sf_count_t count, void* self);
    static sf_count_t tell(void* self);

    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
    bool hasFailed_ = false;
};

} // namespace qel::tools
