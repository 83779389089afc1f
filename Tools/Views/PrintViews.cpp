// The views of a window, as text, as JSON, and as a user sees them.
#include "Views/PrintViews.h"

#include "CParamBridgeAudio.h"
#include "CUIParam.h"
#include "CView.h"
#include "LiteralText.h"
#include "Views/IndexedPng.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <ostream>

namespace qel::tools {

namespace {

std::string paramOf(const CView& view)
{
    for (std::size_t i = 0; i < view.getChildCount(); ++i) {
        if (const auto* param = dynamic_cast<const CUIParam*>(view.getChild(i))) {
            if (const auto* bridge = dynamic_cast<const CParamBridgeAudio*>(param->getBridge())) {
                return bridge->getParam().toUtf8();
            }
        }
    }
    return "";
}

bool isShown(const CView& view)
{
    const CViewBasePlacement* above = &view;
    while (above && above->getAttrBool("is-visible", true)) {
        above = above->getParentView();
    }
    return !above;
}

void collect(CObject& object, std::vector<CViewRecord>& out)
{
    if (auto* const view = dynamic_cast<CView*>(&object)) {
        CViewRecord record;
        record.path = view->getFullName().toUtf8();
        record.tag = view->getTag().toUtf8();
        record.rect = view->getViewArea().getRect();
        record.isVisible = isShown(*view);
        record.isDisabled = view->actsDisabled();
        record.title = plainText(view->getAttrString("title")).toUtf8();
        record.hint = view->getHint().toUtf8();
        record.param = paramOf(*view);
        out.push_back(std::move(record));
    }
    for (std::size_t i = 0; i < object.getChildCount(); ++i) {
        collect(*object.getChild(i), out);
    }
}

// Coordinates are computed in single precision; what differs by less is the same.
double shown(double value)
{
    return std::round(value * 1000.0) / 1000.0 + 0.0;
}

} // namespace

std::vector<CViewRecord> listViews(CWindow& window)
{
    std::vector<CViewRecord> views;
    collect(*window.getRootView(), views);
    return views;
}

void printViewsText(const std::vector<CViewRecord>& views, std::ostream& out)
{
    for (const CViewRecord& view : views) {
        out << view.path << " <" << view.tag << "> " << shown(view.rect.x) << ' ' << shown(view.rect.y) << ' '
            << shown(view.rect.width) << ' ' << shown(view.rect.height);
        out << (view.isVisible ? "" : " hidden") << (view.isDisabled ? " disabled" : "");
        if (!view.title.empty()) {
            out << " \"" << view.title << '"';
        }
        if (!view.param.empty()) {
            out << ' ' << view.param;
        }
        out << '\n';
    }
}

void printViewsJson(const std::vector<CViewRecord>& views, std::ostream& out)
{
    auto list = nlohmann::ordered_json::array();
    for (const CViewRecord& view : views) {
        nlohmann::ordered_json item = {{"path", view.path},
                                       {"tag", view.tag},
                                       {"x", shown(view.rect.x)},
                                       {"y", shown(view.rect.y)},
                                       {"width", shown(view.rect.width)},
                                       {"height", shown(view.rect.height)},
                                       {"visible", view.isVisible},
                                       {"disabled", view.isDisabled},
                                       {"title", view.title},
                                       {"hint", view.hint}};
        if (!view.param.empty()) {
            item["param"] = view.param;
        }
        list.push_back(std::move(item));
    }
    out << list.dump(2) << '\n';
}

void writePicture(CWindow& window, const std::filesystem::path& png)
{
    // Whole sectors: the picture reaches beyond the window.
    const CLinearBitmap& picture = window.getSurface().getPicture();
    const platform::PixelRect place = window.getScreenPlace();
    const int width = std::min(place.width, picture.getWidth());
    std::vector<std::uint32_t> pixels;
    for (int y = 0; y < std::min(place.height, picture.getHeight()); ++y) {
        pixels.insert(pixels.end(), picture.getRow(y), picture.getRow(y) + width);
    }
    writeIndexedPng(png, pixels, static_cast<std::size_t>(width));
}

} // namespace qel::tools
