// Decompressing reader.
#include "Streams/CInputZipStream.h"

#include "Streams/ZlibText.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

namespace qel {

struct CInputZipStream::State
{
    CInputStream* source = nullptr;
    z_stream zip = {};
    bool ended = false;
    Bytef block[kBlockBytes];
};

CInputZipStream::CInputZipStream() = default;

CInputZipStream::~CInputZipStream()
{
    releaseError(CInputZipStream::close());
}

CError CInputZipStream::open(CInputStream& source)
{
    QEL_TRY(close(), {});
    auto state = std::make_unique<State>();
    state->source = &source;
    if (const int code = inflateInit(&state->zip); code != Z_OK) {
        QEL_FAIL({}, "@qelstr_CInputZipStream_open_inflateInit zlib inflateInit error %1 (%2).", code,
                 zlibText(state->zip, code));
    }
    state_ = std::move(state);
    return {};
}

CError CInputZipStream::close()
{
    if (!state_) {
        return {};
    }
    const auto state = std::move(state_);
    if (const int code = inflateEnd(&state->zip); code != Z_OK) {
        QEL_FAIL({}, "@qelstr_CInputZipStream_close_inflateEnd zlib inflateEnd error %1 (%2).", code,
                 zlibText(state->zip, code));
    }
    return {};
}

CError CInputZipStream::consume(std::size_t)
{
    QEL_FAIL({}, "@qelstr_CInputZipStream_consume_Unsupported Consuming is not supported in zip streams.");
}

CError CInputZipStream::fillBlock()
{
    std::size_t count = kBlockBytes;
    QEL_TRY(state_->source->readStreamed(state_->block, count), {});
    if (count == 0) {
        QEL_FAIL({}, "@qelstr_CInputZipStream_read_EOF Premature end of file.");
    }
    state_->zip.next_in = state_->block;
    state_->zip.avail_in = static_cast<uInt>(count);
    return {};
}

CError CInputZipStream::inflateSome(void* buffer, std::size_t count, std::size_t& outDone)
{
    outDone = 0;
    if (!state_) {
        QEL_FAIL({}, "@qelstr_CInputZipStream_read_NoStream Input stream not specified.");
    }
    z_stream& zip = state_->zip;
    while (outDone < count && !state_->ended) {
        if (zip.avail_in == 0) {
            QEL_TRY(fillBlock(), {});
        }
        const auto part =
            static_cast<uInt>(std::min<std::size_t>(count - outDone, std::numeric_limits<uInt>::max()));
        zip.next_out = static_cast<Bytef*>(buffer) + outDone;
        zip.avail_out = part;
        const int code = inflate(&zip, Z_SYNC_FLUSH);
        if (code != Z_OK && code != Z_STREAM_END) {
            QEL_FAIL({}, "@qelstr_CInputZipStream_read_inflate zlib inflate error %1 (%2).", code,
                     zlibText(zip, code));
        }
        outDone += part - zip.avail_out;
        state_->ended = code == Z_STREAM_END;
    }
    return {};
}

CError CInputZipStream::read(void* buffer, std::size_t count)
{
    std::size_t done = 0;
    QEL_TRY(inflateSome(buffer, count, done), {});
    // Input behind the end of the zlib stream never becomes output, so waiting for more would never end.
    if (done < count) {
        QEL_FAIL({}, "@qelstr_CInputZipStream_read_EOF Premature end of file.");
    }
    return {};
}

CError CInputZipStream::readStreamed(void* buffer, std::size_t& inOutCount)
{
    QEL_TRY(inflateSome(buffer, inOutCount, inOutCount), {});
    return {};
}

CError CInputZipStream::checkEnd()
{
    // zlib looks at the checksum only on its way to the next byte of output.
    std::uint8_t next = 0;
    std::size_t count = 0;
    QEL_TRY(inflateSome(&next, sizeof next, count), {});
    if (count > 0) {
        QEL_FAIL({}, "@qelstr_CInputZipStream_checkEnd_MoreData The data are longer than their head tells.");
    }
    return {};
}

} // namespace qel
