// Bitmaps for the X server: shared memory where the server can map ours, plain memory where not.
#pragma once

#include "CSystemSurface.h"
#include "CXcbConnection.h"
#include "SystemEvents.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace qel::platform {

// A block of memory that many surfaces share, mapped by the server too if `segment` is not 0. The descriptor
// of an unnamed file is passed through the connection, so nothing of it is left when either side dies, and no
// other machine's memory can be meant by mistake.
class CXcbMemory
{
public:
    CXcbMemory() = default;
    CXcbMemory(const CXcbMemory&) = delete;
    CXcbMemory& operator=(const CXcbMemory&) = delete;
    ~CXcbMemory();

    [[nodiscard]] int create(std::size_t size);
    // False when the server will not have it; the memory is then as good as any. Waits for the answer.
    bool share(const std::shared_ptr<CXcbConnection>& connection);

    xcb_shm_seg_t segment() const { return segment_; }
    std::uint8_t* data() const { return data_; }
    std::size_t size() const { return size_; }

    std::size_t used = 0; // surfaces lie one after the other and are given back all at once

private:
    int file_ = -1;
    std::uint8_t* data_ = nullptr;
    std::size_t size_ = 0;
    xcb_shm_seg_t segment_ = 0;
    std::weak_ptr<CXcbConnection> connection_;
};

class CXcbSurface : public CSystemSurface
{
public:
    CXcbSurface(std::shared_ptr<CXcbMemory> memory, std::size_t offset, int width, int height);

    const CXcbMemory& memory() const { return *memory_; }
    std::size_t offset() const { return offset_; }

private:
    const std::shared_ptr<CXcbMemory> memory_;
    const std::size_t offset_;
};

// Makes the surfaces of one display and sends them to its windows.
class CXcbSurfaces
{
public:
    explicit CXcbSurfaces(std::shared_ptr<CXcbConnection> connection);

    [[nodiscard]] int create(int width, int height, std::unique_ptr<CSystemSurface>& out);
    // `source` lies within the surface.
    void put(const CXcbSurface& surface, const PixelRect& source, xcb_window_t window, xcb_gcontext_t gc,
             int x, int y);

private:
    bool canShare();
    void putThroughConnection(const CXcbSurface& surface, const PixelRect& source, xcb_window_t window,
                              xcb_gcontext_t gc, int x, int y);

    const std::shared_ptr<CXcbConnection> connection_;
    std::weak_ptr<CXcbMemory> current_; // kept by its surfaces alone
    bool isSharingTried_ = false;
    bool isSharing_ = false;
    std::vector<std::uint8_t> rows_; // on their way through the connection
};

} // namespace qel::platform
