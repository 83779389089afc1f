// Memory of bitmaps, and the two ways of their pixels to the server.
#include "CXcbSurface.h"

#include "XcbPixels.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace qel::platform {

namespace {

constexpr std::size_t kBlockBytes = 1 << 20;    // 16 sectors of 128 x 128
constexpr std::size_t kRequestHeaderBytes = 64; // more than any header of a picture

std::size_t roundUpToPage(std::size_t size)
{
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return (size + page - 1) / page * page;
}

// Descriptors travel on local sockets only: on any other the library would give up the connection.
bool isLocalSocket(int descriptor)
{
    sockaddr_storage address{};
    socklen_t length = sizeof(address);
    return getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) == 0 &&
           address.ss_family == AF_UNIX;
}

} // namespace

CXcbMemory::~CXcbMemory()
{
    const auto connection = segment_ ? connection_.lock() : nullptr;
    if (connection && connection->isAlive()) {
        const CBrokenPipeGuard guard;
        xcb_shm_detach(connection->out(), segment_);
    }
    if (data_) {
        munmap(data_, size_);
    }
    if (file_ >= 0) {
        ::close(file_);
    }
}

int CXcbMemory::create(std::size_t size)
{
    size_ = roundUpToPage(size);
    file_ = memfd_create("pixels", MFD_CLOEXEC);
    if (file_ < 0 || ftruncate(file_, static_cast<off_t>(size_)) != 0) {
        return errno;
    }
    void* data = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_SHARED, file_, 0);
    if (data == MAP_FAILED) {
        return errno;
    }
    data_ = static_cast<std::uint8_t*>(data);
    return 0;
}

bool CXcbMemory::share(const std::shared_ptr<CXcbConnection>& connection)
{
    const CBrokenPipeGuard guard;
    const int passed = fcntl(file_, F_DUPFD_CLOEXEC, 0); // the library closes what it sends
    if (passed < 0) {
        return false;
    }
    const xcb_shm_seg_t segment = xcb_generate_id(connection->get());
    constexpr std::uint8_t kReadOnly = 1;
    if (!connection->check(xcb_shm_attach_fd_checked(connection->out(), segment, passed, kReadOnly))) {
        return false;
    }
    segment_ = segment;
    connection_ = connection;
    return true;
}

CXcbSurface::CXcbSurface(std::shared_ptr<CXcbMemory> memory, std::size_t offset, int width, int height)
    : CSystemSurface(width, height), memory_(std::move(memory)), offset_(offset)
{
    pixels_ = memory_->data() + offset_;
    std::memset(pixels_, 0, static_cast<std::size_t>(height) * static_cast<std::size_t>(pitch()));
}

CXcbSurfaces::CXcbSurfaces(std::shared_ptr<CXcbConnection> connection) : connection_(std::move(connection)) {}

int CXcbSurfaces::create(int width, int height, std::unique_ptr<CSystemSurface>& out)
{
    constexpr int kMaxSide = 0x7FFF; // of anything in X
    if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) {
        return EINVAL;
    }
    const std::size_t size =
        static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * CSystemSurface::kBytesPerPixel;
    std::shared_ptr<CXcbMemory> memory = current_.lock();
    if (!memory || memory->size() - memory->used < size) {
        memory = std::make_shared<CXcbMemory>();
        if (const int error = memory->create(std::max(size, kBlockBytes))) {
            return error;
        }
        if (canShare()) {
            isSharing_ = memory->share(connection_);
        }
        current_ = memory;
    }
    const std::size_t offset = memory->used;
    memory->used += size;
    out = std::make_unique<CXcbSurface>(std::move(memory), offset, width, height);
    return 0;
}

// A server that refused once is not asked again.
bool CXcbSurfaces::canShare()
{
    if (isSharingTried_) {
        return isSharing_ && connection_->isAlive();
    }
    isSharingTried_ = true;
    if (!connection_->isAlive() || !hasXcbShm() || !connection_->format().isNative() ||
        !isLocalSocket(xcb_get_file_descriptor(connection_->get()))) {
        return false;
    }
    const CBrokenPipeGuard guard;
    const xcb_query_extension_reply_t* extension = xcb_get_extension_data(connection_->get(), xcb_shm_id);
    if (!extension || !extension->present) {
        return false;
    }
    const auto version =
        connection_->wait<xcb_shm_query_version_reply_t>(xcb_shm_query_version(connection_->out()));
    constexpr int kPassesDescriptors = 0x102; // 1.2
    return version && ((version->major_version << 8) | version->minor_version) >= kPassesDescriptors;
}

void CXcbSurfaces::put(const CXcbSurface& surface, const PixelRect& source, xcb_window_t window,
                       xcb_gcontext_t gc, int x, int y)
{
    const xcb_shm_seg_t segment = surface.memory().segment();
    if (!segment) {
        putThroughConnection(surface, source, window, gc, x, y);
        return;
    }
    xcb_shm_put_image(connection_->out(), window, gc, static_cast<std::uint16_t>(surface.width()),
                      static_cast<std::uint16_t>(surface.height()), static_cast<std::uint16_t>(source.x),
                      static_cast<std::uint16_t>(source.y), static_cast<std::uint16_t>(source.width),
                      static_cast<std::uint16_t>(source.height), static_cast<std::int16_t>(x),
                      static_cast<std::int16_t>(y), connection_->format().depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0,
                      segment, static_cast<std::uint32_t>(surface.offset()));
}

// In strips that fit into a request.
void CXcbSurfaces::putThroughConnection(const CXcbSurface& surface, const PixelRect& source,
                                        xcb_window_t window, xcb_gcontext_t gc, int x, int y)
{
    const XcbPixelFormat& format = connection_->format();
    const std::size_t rowBytes = xcbRowBytes(format, source.width);
    const std::size_t requestBytes =
        std::size_t{4} * xcb_get_maximum_request_length(connection_->get()) - kRequestHeaderBytes;
    const int stripHeight =
        static_cast<int>(std::clamp<std::size_t>(requestBytes / rowBytes, 1, std::size_t(source.height)));
    for (int top = 0; top < source.height; top += stripHeight) {
        const int height = std::min(stripHeight, source.height - top);
        rows_.assign(rowBytes * static_cast<std::size_t>(height), 0);
        for (int row = 0; row < height; ++row) {
            const std::uint8_t* from = surface.pixels() + (source.y + top + row) * surface.pitch() +
                                       source.x * CSystemSurface::kBytesPerPixel;
            packXcbRow(format, from, source.width, rows_.data() + rowBytes * static_cast<std::size_t>(row));
        }
        xcb_put_image(connection_->out(), XCB_IMAGE_FORMAT_Z_PIXMAP, window, gc,
                      static_cast<std::uint16_t>(source.width), static_cast<std::uint16_t>(height),
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y + top), 0, format.depth,
                      static_cast<std::uint32_t>(rows_.size()), rows_.data());
    }
}

} // namespace qel::platform
