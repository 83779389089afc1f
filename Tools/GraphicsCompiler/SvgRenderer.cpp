// SVG to pixels.
#include "GraphicsCompiler/SvgRenderer.h"

#include "TreeCompiler/ToolError.h"

#include <cairo.h>
#include <librsvg/rsvg.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace qel::tools {

namespace {

struct Release
{
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(RsvgHandle* handle) const { g_object_unref(handle); }
};

[[noreturn]] void fail(GError* error)
{
    const std::string text = error == nullptr ? "the drawing cannot be rendered" : error->message;
    g_clear_error(&error);
    throw CToolError(text);
}

struct Colour
{
    int red;
    int green;
    int blue;
    int alpha;
};

// Cairo's pixels are premultiplied.
Colour straight(std::uint32_t pixel)
{
    const int alpha = static_cast<int>(pixel >> 24);
    const auto channel = [&](int shift) {
        const int premultiplied = static_cast<int>((pixel >> shift) & 0xFF);
        return alpha == 0 ? 0 : std::min((premultiplied * 255 + alpha / 2) / alpha, 255);
    };
    return {channel(16), channel(8), channel(0), alpha};
}

void store(const Colour& colour, std::uint8_t* pixel, int bytesPerPixel)
{
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    pixel[bytesPerPixel - 1] = byte(colour.alpha);
    if (bytesPerPixel == 2) {
        // Rec. 709; greys come through as they are.
        pixel[0] = byte((colour.red * 2126 + colour.green * 7152 + colour.blue * 722 + 5000) / 10000);
    } else if (bytesPerPixel == 4) {
        pixel[0] = byte(colour.blue);
        pixel[1] = byte(colour.green);
        pixel[2] = byte(colour.red);
    }
}

} // namespace

CRaster renderSvg(const std::string& svg, int width, int height, int bytesPerPixel)
{
    CRaster raster(width, height, bytesPerPixel);
    GError* error = nullptr;
    const std::unique_ptr<RsvgHandle, Release> handle(
        rsvg_handle_new_from_data(reinterpret_cast<const guint8*>(svg.data()), svg.size(), &error));
    if (!handle) {
        fail(error);
    }
    const std::unique_ptr<cairo_surface_t, Release> surface(
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    const std::unique_ptr<cairo_t, Release> context(cairo_create(surface.get()));
    const RsvgRectangle viewport = {0.0, 0.0, static_cast<double>(width), static_cast<double>(height)};
    if (!rsvg_handle_render_document(handle.get(), context.get(), &viewport, &error)) {
        fail(error);
    }
    cairo_surface_flush(surface.get());
    const std::uint8_t* data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, data + y * stride + x * 4, sizeof pixel);
            if (pixel != 0) {
                store(straight(pixel), raster.at(x, y), bytesPerPixel);
            }
        }
    }
    return raster;
}

} // namespace qel::tools
