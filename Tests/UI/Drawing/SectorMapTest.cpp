// The sectors of a window: what is painted when, and that it is the same as painting everything.
#include "AllocationGuard.h"
#include "CDrawContext.h"
#include "CDrawLoad.h"
#include "CImageSet.h"
#include "COffscreenSurface.h"
#include "CSectorMap.h"
#include "GraphicsBytes.h"
#include "Streams/CMemoryReader.h"
#include "Trace.h"
#include "TreeFixture.h"

#include <functional>
#include <memory>

namespace qel {
namespace {

using test::Picture;

constexpr double kMapWidth = 300.0;
constexpr double kMapHeight = 270.0;

CPaletteColor solid(std::uint32_t rgb, double opacity = 1.0)
{
    CPaletteColor color;
    color.opacity = opacity;
    for (std::size_t i = 0; i < 256; ++i) {
        color.red[i] = static_cast<std::uint8_t>((rgb >> 16) * i / 255);
        color.green[i] = static_cast<std::uint8_t>((rgb >> 8 & 0xFF) * i / 255);
        color.blue[i] = static_cast<std::uint8_t>((rgb & 0xFF) * i / 255);
    }
    return color;
}

// Draws by a function of the test, in one colour for each side of a fade.
class TestView : public CSectorView
{
public:
    using Draw = std::function<void(CDrawContext&)>;

    explicit TestView(Draw draw) : draw_(std::move(draw)) { allocateClips(1); }

    void place(CSectorMap& map, const CRect& area) { place(map, area, area); }
    void place(CSectorMap& map, const CRect& area, const CRect& visible)
    {
        map.moveView(*this, area, visible);
        setClip(1, area);
    }
    void setOpacity(double opacity) { setDrawOpacity(opacity); }
    void setFade(double position) { setFadePosition(position); }
    void setColors(const CPaletteColor& from, const CPaletteColor& to)
    {
        from_ = from;
        to_ = to;
    }
    int takeDrawCount() { return std::exchange(drawCount_, 0); }

    void selectFadeSide(FadeSide side) override { side_ = side; }
    const CPaletteColor* getSlotColor(std::uint32_t) override
    {
        return side_ == FadeSide::kFrom ? &from_ : &to_;
    }
    void drawInto(CDrawContext& context) override
    {
        ++drawCount_;
        draw_(context);
    }

private:
    Draw draw_;
    CPaletteColor from_ = solid(0xFFFFFF);
    CPaletteColor to_ = solid(0xFFFFFF);
    FadeSide side_ = FadeSide::kTo;
    int drawCount_ = 0;
};

void fillAll(CDrawContext& context)
{
    context.drawFilledRect(0, {0, 0, 1000, 1000}, 1, 1.0);
}

class SectorMap : public ::testing::Test
{
protected:
    SectorMap()
    {
        CMemoryReader imageReader(imageFile_.bytes());
        releaseError(images_.load(imageReader));
        CMemoryReader brushReader(brushFile_.bytes());
        releaseError(brushes_.load(brushReader));
        EXPECT_OK(map_.resize(kMapWidth, kMapHeight));
        paint();
    }

    std::unique_ptr<TestView> add(std::int32_t zIndex, bool isDynamic, const CRect& area,
                                  TestView::Draw draw = fillAll)
    {
        auto view = std::make_unique<TestView>(std::move(draw));
        map_.setViewZIndex(*view, zIndex);
        map_.setViewDynamic(*view, isDynamic);
        map_.addView(*view);
        view->place(map_, area);
        return view;
    }
    // Returns the number of sectors that were painted.
    std::int32_t paint()
    {
        map_.paintDirty();
        map_.present();
        return surface_.takeInvalidated().count;
    }
    std::uint32_t pixel(std::int32_t x, std::int32_t y) { return surface_.getPicture().getRow(y)[x]; }
    std::vector<std::uint32_t> picture()
    {
        const CLinearBitmap& bitmap = surface_.getPicture();
        const std::uint32_t* const first = bitmap.getRow(0);
        return {first, first + bitmap.getBounds().area()};
    }

    std::mt19937 random_{21};
    test::FileBytes imageFile_ = test::imageSetBytes(
        {},
        {{1, {{0, 2, Picture::random(31, 23, random_), -4, -3}, {1, 1, Picture::random(20, 20, random_)}}}});
    test::FileBytes brushFile_ = test::brushSetBytes(3.0, 5, 2.0);
    CImageSet images_;
    CBrushSet brushes_;
    COffscreenSurface surface_;
    CSectorMap map_{surface_};
    TestView* view_ = nullptr; // for a view's own draw function
};

TEST_F(SectorMap, PaintsDirtyPartsToWhatAFullRepaintGives)
{
    const auto below = [this](int limit) {
        return static_cast<double>(random_() % static_cast<unsigned>(limit * 8)) / 8.0;
    };
    const auto area = [&] { return CRect{below(340) - 40, below(300) - 40, below(160), below(120)}; };
    const auto color = [this] {
        return solid(static_cast<std::uint32_t>(random_()) & 0xFFFFFF, random_() % 2 == 0 ? 1.0 : 0.5);
    };
    std::vector<CPoint> points(5);
    std::generate(points.begin(), points.end(), [&] { return CPoint{below(150) - 10, below(100) - 10}; });
    std::vector<std::unique_ptr<TestView>> views;
    for (int i = 0; i < 14; ++i) {
        views.push_back(
            add(static_cast<std::int32_t>(random_() % 3), i % 3 == 0, area(), [&, i](CDrawContext& context) {
                if (i % 2 == 0) {
                    context.drawFilledRect(0, {3.3, 2.2, 55.5, 44.4}, 1, 0.7);
                    context.drawInvertedRect({30, 30, 9, 9}, 1);
                }
                if (i % 3 == 0) {
                    context.drawPolyline(points, brushes_.getBrushes()[0], 1,
                                         *views[static_cast<std::size_t>(i)]->getSlotColor(0), 0.8);
                }
                context.drawImage(images_.getImage(1), {7.5, 4}, 1, 0.9, i % 4 == 1, i % 4 < 2);
            }));
    }
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        for (int change = 0; change < 1 + round % 3; ++change) {
            TestView& view = *views[random_() % views.size()];
            const CRect wanted = area();
            switch (random_() % 7) {
            case 0:
                view.place(map_, wanted);
                break;
            case 1:
                view.place(map_, wanted, wanted.intersectedWith(area()));
                break;
            case 2:
                map_.setViewDynamic(view, !view.isDynamic());
                break;
            case 3:
                map_.setViewZIndex(view, static_cast<std::int32_t>(random_() % 3));
                break;
            case 4:
                map_.removeView(view);
                map_.addView(view);
                break;
            case 5:
                view.setFade(below(2) / 2);
                view.setOpacity(below(1));
                map_.markView(view);
                break;
            default:
                view.setColors(color(), color());
                map_.markView(view);
                break;
            }
        }
        paint();
        const std::vector<std::uint32_t> changed = picture();
        ASSERT_OK(map_.resize(kMapWidth, kMapHeight));
        EXPECT_EQ(paint(), 9);
        ASSERT_TRUE(changed == picture());
    }
}

// Images, tiles, lines and rectangles come out alike wherever the edges of the sectors lie.
TEST_F(SectorMap, ShowsNoSeamBetweenSectors)
{
    std::vector<CPoint> points = {{4, 90}, {60.3, 5.7}, {61, 80}, {std::nan(""), 0}, {90, 9}, {1e6, 5e6}};
    const auto view = add(0, false, {0, 0, 100, 100}, [&](CDrawContext& context) {
        context.drawImage(images_.getImage(1), {-7, 11}, 1, 1.0, true, true);
        context.drawFilledRect(0, {20, 30, 50, 40}, 1, 0.6);
        context.drawImageLayer(images_.getImage(1), 0, {50, 50}, 1, 0.3);
        context.drawPolyline(points, brushes_.getBrushes()[0], 1, *view_->getSlotColor(0), 0.6);
    });
    view_ = view.get();
    const auto pictureAt = [&](std::int32_t x, std::int32_t y) {
        view->place(map_, {static_cast<double>(x), static_cast<double>(y), 100, 100});
        paint();
        std::vector<std::uint32_t> part;
        for (std::int32_t row = y; row < y + 100; ++row) {
            for (std::int32_t column = x; column < x + 100; ++column) {
                part.push_back(pixel(column, row));
            }
        }
        return part;
    };
    const std::vector<std::uint32_t> whole = pictureAt(14, 14);
    EXPECT_GT(std::count_if(whole.begin(), whole.end(), [](std::uint32_t p) { return p != 0; }), 8000);
    EXPECT_EQ(pictureAt(70, 60), whole);
    EXPECT_EQ(pictureAt(127, 100), whole);
}

TEST_F(SectorMap, RepaintsOnlyWhatLiesAboveTheStaticViews)
{
    const auto ground = add(0, false, {0, 0, 300, 270});
    const auto meter = add(1, true, {20, 20, 40, 40});
    const auto above = add(2, false, {30, 30, 10, 10});
    EXPECT_EQ(paint(), 9);
    EXPECT_EQ(above->takeDrawCount(), 0) << "in a sector, static views end where dynamic ones begin";
    ground->takeDrawCount();
    meter->takeDrawCount();

    map_.markView(*meter);
    EXPECT_EQ(paint(), 1);
    EXPECT_EQ(ground->takeDrawCount(), 0);
    EXPECT_EQ(meter->takeDrawCount(), 1);
    meter->place(map_, {200, 20, 40, 40});
    EXPECT_EQ(paint(), 2);
    EXPECT_EQ(ground->takeDrawCount(), 1) << "what was above the meter has come into the static layer";
    meter->place(map_, {20, 20, 40, 40});
    paint();

    ground->takeDrawCount();
    map_.markDirty({25, 25, 2, 2}, *above);
    EXPECT_EQ(paint(), 1);
    EXPECT_EQ(ground->takeDrawCount(), 0);
    map_.markDirty({25, 25, 2, 2}, *ground);
    EXPECT_EQ(paint(), 1);
    EXPECT_EQ(ground->takeDrawCount(), 1);
    EXPECT_EQ(paint(), 0) << "nothing has changed";
}

TEST_F(SectorMap, TouchesTheSectorsThatARoundedRectangleMeets)
{
    const auto view = add(0, true, {0, 0, 10, 10});
    paint();
    const auto touched = [&](const CRect& rect) {
        map_.markDirty(rect, *view);
        return paint();
    };
    EXPECT_EQ(touched({10, 10, 50, 50}), 1);
    EXPECT_EQ(touched({127.6, 10, 0.2, 5}), 1);
    EXPECT_EQ(touched({120, 120, 20, 20}), 4);
    EXPECT_EQ(touched({-500, -500, 2000, 2000}), 9);
    EXPECT_EQ(touched({10, 10, 5, 5e-6}), 0);
    EXPECT_EQ(touched({300, 0, 50, 50}), 0) << "right of the window, though within the last sector";
    EXPECT_EQ(touched({-50, 0, 50, 50}), 0);
    EXPECT_EQ(touched({0, std::nan(""), 50, 50}) + touched({0, 0, 50, std::nan("")}), 0);
}

TEST_F(SectorMap, BlendsByOpacityAndFade)
{
    const auto view = add(0, false, {10, 10, 20, 20});
    view->setColors(solid(0x200000), solid(0x640000));
    struct Case
    {
        double opacity;
        double fade;
        std::uint32_t pixel;
        int draws;
    };
    const Case cases[] = {{1.0, 1.0, 0x640000, 1}, {0.9995, 1.0, 0x640000, 1}, {0.0005, 1.0, 0, 0},
                          {0.5, 1.0, 0x320000, 1}, {1.0, 0.5, 0x420000, 2},    {1.0, 0.991, 0x640000, 1},
                          {0.5, 0.25, 0x180000, 2}};
    for (const Case& row : cases) {
        view->setOpacity(row.opacity);
        view->setFade(row.fade);
        map_.markView(*view);
        paint();
        EXPECT_EQ(pixel(15, 15), row.pixel) << row.opacity << " " << row.fade;
        EXPECT_EQ(view->takeDrawCount(), row.draws) << row.opacity << " " << row.fade;
    }
    view->place(map_, {10, 10, 20, 0.1});
    paint();
    EXPECT_EQ(view->takeDrawCount(), 0);
}

TEST_F(SectorMap, KeepsWithinTheClipAndTheVisiblePart)
{
    std::vector<CString> lines;
    const CTraceHook before = setTraceHook([&](const CString& line) { lines.push_back(line); });
    const auto view = add(0, false, {}, [this](CDrawContext& context) {
        context.drawFilledRect(0, {-50, -50, 200, 200}, 1, 1.0);
        context.drawFilledRect(0, {-50, -50, 200, 200}, 0, 1.0);
        context.drawImage(images_.getImage(1), {}, 0, 1.0);
    });
    view->place(map_, {100, 100, 60, 60}, {110, 90, 30, 60});
    paint();
    setTraceHook(before);
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], "drawFilledRect CLIP 0");
    EXPECT_EQ(lines[1], "drawImage CLIP 0");
    for (std::int32_t y = 0; y < 270; ++y) {
        for (std::int32_t x = 0; x < 300; ++x) {
            const bool isFilled = x >= 110 && x < 140 && y >= 100 && y < 150;
            ASSERT_EQ(pixel(x, y), isFilled ? 0xFFFFFFU : 0U) << x << ", " << y;
        }
    }
    const CRect centered = alignInClip(*view, 1, 20, 31, 0, 1);
    EXPECT_EQ(centered, (CRect{20, 29, 20, 31}));
}

TEST_F(SectorMap, WaitsWhileFrozenAndRepaintsAfterAResize)
{
    const auto view = add(0, false, {10, 10, 600, 20});
    map_.setFrozen(true);
    EXPECT_EQ(paint(), 0);
    EXPECT_TRUE(map_.isDirty());
    ASSERT_OK(map_.resize(540.0, 373.0));
    EXPECT_EQ(map_.getColumns() * map_.getRows(), 15);
    map_.setFrozen(false);
    drawing::setFrameTime(7.0);
    EXPECT_EQ(paint(), 15);
    EXPECT_EQ(pixel(539, 15), 0xFFFFFFU);
    EXPECT_EQ(map_.getLastStaticUpdate(), 0.0);
    map_.setExportingDrawLoad(true);
    map_.markView(*view);
    EXPECT_EQ(paint(), 5);
    EXPECT_EQ(map_.getLastStaticUpdate(), 7.0);
    ASSERT_OK(map_.resize(0.0, -3.0));
    EXPECT_EQ(paint(), 0);
}

// A line keeps its width and its colour, wherever it goes and whatever it crosses.
TEST_F(SectorMap, DrawsEvenLines)
{
    const std::vector<CPoint> points = {{5, 20.4}, {95, 20.4}, {50, 5}, {50.3, 60}, {70, 20.4}, {30, 20.4}};
    const auto view = add(0, false, {0, 0, 100, 100}, [&](CDrawContext& context) {
        context.drawPolyline(points, brushes_.getBrushes()[0], 1, *view_->getSlotColor(0), 0.5);
    });
    view_ = view.get();
    paint();
    for (const std::int32_t x : {10, 25, 40}) {
        std::uint32_t sum = 0;
        for (std::int32_t y = 14; y < 27; ++y) {
            sum += pixel(x, y) & 0xFF;
        }
        EXPECT_NEAR(sum / 255.0, 0.5 * 3.0, 0.06) << x << ": a brush of 3 pixels";
    }
    EXPECT_NEAR(pixel(50, 20) & 0xFF, 127, 1);
    EXPECT_EQ(pixel(2, 20), 0u);
    EXPECT_GT(pixel(4, 20), 0u) << "a round end";
}

TEST_F(SectorMap, DoesNotAllocateWhileItPaints)
{
    if (!test::AllocationGuard::kCounts) {
        GTEST_SKIP() << "nothing is counted in this build";
    }
    const auto ground = add(0, false, {0, 0, 300, 270});
    const std::vector<CPoint> points = {{5, 20}, {15, 3}, {200.5, 31}};
    const auto meter = add(1, true, {20, 20, 240, 40}, [&](CDrawContext& context) {
        context.drawImage(images_.getImage(1), {}, 1, 0.5, true, true);
        context.drawPolyline(points, brushes_.getBrushes()[0], 1, *view_->getSlotColor(0), 1.0);
    });
    view_ = meter.get();
    meter->setOpacity(0.7);
    meter->setFade(0.5);
    test::AllocationGuard guard;
    map_.markAll();
    map_.paintDirty();
    map_.present();
    map_.markView(*meter);
    map_.paintDirty();
    map_.present();
    EXPECT_EQ(guard.stop().total(), 0u);
}

} // namespace
} // namespace qel
