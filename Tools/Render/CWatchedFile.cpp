// A file for the audio library that remembers whether all that was written got there.
#include "Render/CWatchedFile.h"

namespace qel::tools {

SF_VIRTUAL_IO& CWatchedFile::access()
{
    static SF_VIRTUAL_IO functions{&length, &seek, &read, &write, &tell};
    return functions;
}

bool CWatchedFile::close()
{
    // What is still in the stream's own buffer can fail in a seek as well, which leaves a mark on the stream.
    hasFailed_ |= !file_ || std::ferror(file_.get()) != 0;
    const bool isClosed = file_ && std::fclose(file_.release()) == 0;
    return isClosed && !hasFailed_;
}

sf_count_t CWatchedFile::length(void* self)
{
    std::FILE* const file = of(self).file_.get();
    const off_t here = ftello(file);
    fseeko(file, 0, SEEK_END);
    const off_t end = ftello(file);
    fseeko(file, here, SEEK_SET);
    return end;
}

sf_count_t CWatchedFile::seek(sf_count_t offset, int whence, void* self)
{
    std::FILE* const file = of(self).file_.get();
    return fseeko(file, offset, whence) == 0 ? ftello(file) : -1;
}

sf_count_t CWatchedFile::read(void* target, sf_count_t count, void* self)
{
    return static_cast<sf_count_t>(
        std::fread(target, 1, static_cast<std::size_t>(count), of(self).file_.get()));
}

sf_count_t CWatchedFile::write(const void* source, sf_count_t count, void* self)
{
    const std::size_t done = std::fwrite(source, 1, static_cast<std::size_t>(count), of(self).file_.get());
    of(self).hasFailed_ |= done != static_cast<std::size_t>(count);
    return static_cast<sf_count_t>(done);
}

sf_count_t CWatchedFile::tell(void* self)
{
    return ftello(of(self).file_.get());
}

} // namespace qel::tools
