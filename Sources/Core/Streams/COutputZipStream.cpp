// Compressing writer.
#include "Streams/COutputZipStream.h"

#include "Streams/ZlibText.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

namespace qel {

struct COutputZipStream::State
{
    COutputStream* target = nullptr;
    z_stream zip = {};
    Bytef block[kBlockBytes];

    void resetBlock()
    {
        zip.next_out = block;
        zip.avail_out = kBlockBytes;
    }
};

COutputZipStream::COutputZipStream() = default;

COutputZipStream::~COutputZipStream()
{
    releaseError(close());
}

CError COutputZipStream::open(COutputStream& target, int level)
{
    QEL_TRY(close(), {});
    auto state = std::make_unique<State>();
    state->target = &target;
    if (const int code = deflateInit(&state->zip, level); code != Z_OK) {
        QEL_FAIL({}, "@qelstr_COutputZipStream_open_deflateInit zlib deflateInit error %1 (%2).", code,
                 zlibText(state->zip, code));
    }
    state->resetBlock();
    state_ = std::move(state);
    return {};
}

CError COutputZipStream::flushBlock(State& state)
{
    const std::size_t count = kBlockBytes - state.zip.avail_out;
    if (count > 0) {
        QEL_TRY(state.target->write(state.block, count), {});
    }
    state.resetBlock();
    return {};
}

CError COutputZipStream::write(const void* buffer, std::size_t count)
{
    if (!state_) {
        QEL_FAIL({}, "@qelstr_COutputZipStream_write_NoStream Output stream not specified.");
    }
    z_stream& zip = state_->zip;
    const auto* bytes = static_cast<const Bytef*>(buffer);
    while (count > 0) {
        const auto part = static_cast<uInt>(std::min<std::size_t>(count, std::numeric_limits<uInt>::max()));
        zip.next_in = const_cast<Bytef*>(bytes);
        zip.avail_in = part;
        while (zip.avail_in > 0) {
            if (const int code = deflate(&zip, Z_NO_FLUSH); code != Z_OK) {
                QEL_FAIL({}, "@qelstr_COutputZipStream_write_deflate zlib deflate error %1 (%2).", code,
                         zlibText(zip, code));
            }
            if (zip.avail_out == 0) {
                QEL_TRY(flushBlock(*state_), {});
            }
        }
        bytes += part;
        count -= part;
    }
    return {};
}

CError COutputZipStream::finish(State& state)
{
    state.zip.next_in = nullptr;
    state.zip.avail_in = 0;
    int code = Z_OK;
    while (code != Z_STREAM_END) {
        code = deflate(&state.zip, Z_FINISH);
        if (code != Z_OK && code != Z_STREAM_END) {
            QEL_FAIL({}, "@qelstr_COutputZipStream_close_deflate zlib deflate error %1 (%2).", code,
                     zlibText(state.zip, code));
        }
        QEL_TRY(flushBlock(state), {});
    }
    return {};
}

CError COutputZipStream::close()
{
    if (!state_) {
        return {};
    }
    const auto state = std::move(state_);
    CError error = finish(*state);
    const int code = deflateEnd(&state->zip);
    QEL_TRY(std::move(error), {});
    if (code != Z_OK) {
        QEL_FAIL({}, "@qelstr_COutputZipStream_close_deflateEnd zlib deflateEnd error %1 (%2).", code,
                 zlibText(state->zip, code));
    }
    return {};
}

} // namespace qel
