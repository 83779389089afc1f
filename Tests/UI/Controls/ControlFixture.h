// Trees of controls without a window system.
#pragma once

#include "../Views/ViewFixture.h"
#include "CButton.h"
#include "CFrame.h"
#include "CImageSetObject.h"
#include "CPicture.h"
#include "CScrollerBar.h"
#include "CUIParam.h"
#include "CValueList.h"

#include <deque>

namespace qel::test {

// A view tree that knows controls and image sets: each set that a test adds is found as "is.<name>".
class ControlFixture : public ViewFixture
{
protected:
    ControlFixture() { releaseError(registerCreators(kControlRows)); }

    // Images of one grey value each, by id from 0, of the sizes and values that are given.
    struct Tile
    {
        std::int32_t width;
        std::int32_t height;
        std::uint8_t value;
    };
    void addImages(const std::string& name, const std::vector<Tile>& tiles,
                   const std::vector<RangeBytes>& ranges = {})
    {
        std::vector<ImageBytes> images;
        for (const Tile& tile : tiles) {
            Picture picture(tile.width, tile.height);
            for (std::int32_t i = 0; i < tile.width * tile.height; ++i) {
                picture.pixels[4 * static_cast<std::size_t>(i)] = tile.value;
                picture.pixels[4 * static_cast<std::size_t>(i) + 3] = 255;
            }
            images.push_back({static_cast<std::uint32_t>(images.size()), {{0, 2, picture}}});
        }
        files_.push_back(imageSetBytes(ranges, images).bytes());
        registerResource((name + ".is").c_str(), files_.back());
        sets_.push_back(node("imageset", name, {{"file", name + ".is"}}));
    }
    void loadControls(const std::vector<TreeNode>& views, Attrs rootAttrs = {},
                      std::vector<TreeNode> others = {})
    {
        rootAttrs.emplace_back("color", "Black");
        others.push_back(node("core:object", "is", {}, sets_));
        load(views, std::move(rootAttrs), others);
    }

    // Parameters of an event of the pointer at a point of the window.
    static CAttrMap pointer(int x, int y, const std::string& flag = {})
    {
        CAttrMap parameters;
        parameters["x"] = CAttrValue(x);
        parameters["y"] = CAttrValue(y);
        if (!flag.empty()) {
            parameters[flag.c_str()] = CAttrValue(true);
        }
        return parameters;
    }
    double real(const char* path, const char* name) { return root_->findObject(path)->getAttrReal(name); }

    // The grey value that colour "White" shows at a point; 0 where nothing is drawn.
    int value(std::int32_t x, std::int32_t y) { return static_cast<int>(pixel(x, y) & 0xFF); }
    // The values along a row or column, up to `end`, each run of equal ones once: "10x4 20x12".
    std::string valuesAcross(std::int32_t y, std::int32_t from, std::int32_t end)
    {
        return runs(from, end, [&](std::int32_t at) { return value(at, y); });
    }
    std::string valuesDown(std::int32_t x, std::int32_t from, std::int32_t end)
    {
        return runs(from, end, [&](std::int32_t at) { return value(x, at); });
    }

private:
    template <class At>
    static std::string runs(std::int32_t from, std::int32_t end, At at)
    {
        std::string text;
        for (std::int32_t i = from, start = from; i < end; ++i) {
            if (i + 1 == end || at(i + 1) != at(start)) {
                text += (text.empty() ? "" : " ") + std::to_string(at(start)) + "x" +
                        std::to_string(i + 1 - start);
                start = i + 1;
            }
        }
        return text;
    }

    static constexpr CCreatorRow kControlRows[] = {
        creatorRow<CImageSetObject>("imageset"),
        creatorRow<CButton>("ui:button"),
        creatorRow<CButton>("ui:button-base"),
        creatorRow<CFrame>("ui:frame"),
        creatorRow<CPicture>("ui:picture"),
        creatorRow<CScrollerBar>("ui:scroller-bar"),
        creatorRow<CUIParam>("ui:ui-param"),
        creatorRow<CValueList>("ui:value-list-manual"),
        {nullptr, nullptr, nullptr},
    };

    std::deque<std::vector<std::uint8_t>> files_;
    std::vector<TreeNode> sets_;
};

} // namespace qel::test
