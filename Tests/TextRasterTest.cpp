// From text to pixels, and what gives none.
#include "TestSupport.h"

#include <QPainter>
#include <QTextLayout>

#include <cmath>
#include <limits>

using TextRasterTest = SceneTest;

static osg::ImagePtr render(osg::OverlayPtr const& overlay, int targetHeight = 600)
{
    ztOverlays::updateOverlayImage(overlay, 800, targetHeight);
    return SceneTest::shownImage(overlay);
}

/// Lines of text below one another.
static QImage paintByHand(std::initializer_list<char const*> lines, QFont const& font)
{
    std::vector<std::unique_ptr<QTextLayout>> layouts;
    double height = 0, width = 0;
    for (char const* text : lines)
    {
        layouts.push_back(std::make_unique<QTextLayout>(text, font));
        layouts.back()->beginLayout();
        for (QTextLine line = layouts.back()->createLine(); line.isValid(); line = layouts.back()->createLine())
        {
            line.setLeadingIncluded(true);
            line.setLineWidth(1e9);
            line.setPosition({0, height});
            height += line.height();
        }
        layouts.back()->endLayout();
        width = std::max(width, layouts.back()->maximumWidth());
    }
    QImage label(int(width), int(height), QImage::Format_ARGB32_Premultiplied);
    label.fill(QColor(25, 51, 102, 163));
    QPainter painter(&label);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    painter.setPen(QColor(229, 204, 51, 229));
    for (auto const& layout : layouts)
        layout->draw(&painter, {0, 0});
    return label;
}

TEST_F(TextRasterTest, EqualsLinesPaintedByHand)
{
    // Scripts that are shaped, run from right to left or beyond 16 bits, a break that isn't counted, an empty line,
    // bytes that are no UTF-8, and what a zero byte hides.
    char const* const first = "Camera 7 \u05e9\u05dc\u05d5\u05dd 12 \u5b57\u5e55 \U0001F600\u2028M";
    char const* const last =
        "f/2.8 \u0628\u0628\u0628 \u0939\u093f\u0928\u094d\u0926\u0940 a\u0301\u0302 \xff\xfe \xc3";
    ztPlatform::setDpiScale(3, 3); // plays no part
    // As one font is called in Chinese; the other one has leading.
    for (auto const& [font, family] : {std::pair{"\u6587\u6cc9\u9a5b\u5fae\u7c73\u9ed1", "WenQuanYi Micro Hei"},
                                       {"Noto Looped Lao", "Noto Looped Lao"}})
    {
        osg::OverlayPtr const overlay = hold(osg::create<osg::Overlay>());
        overlay->text = first + std::string("\n\n") + last + std::string("\n\0hidden", 8);
        overlay->size = 21.9f;
        overlay->dirty = false; // but not complete
        overlay->font = font;
        overlay->textColor = {0.9f, 0.8f, 0.2f, 0.9f};
        overlay->backgroundColor = {0.1f, 0.2f, 0.4f};
        overlay->backgroundTransparency = {0.5f, 0.25f, 1}; // a luminance of 0.357
        QImage const expected = paintByHand({first, "", last, ""}, QFont(family, 21));
        ztOverlays::updateOverlay(overlay, 800, 600);
        EXPECT_EQ(toQImage(shownImage(overlay)), expected) << family;
    }
}

TEST_F(TextRasterTest, RelativeSizeGivesTheHeight)
{
    // Points and height; no points: blank.
    using Row = std::tuple<char const*, char const*, int, float, int, double, int, int>;
    for (auto const& [name, text, sizeMode, size, targetHeight, dpi, points, height] : {
             Row{"two lines at 2x", "one\ntwo", 1, 0.1f, 1000, 2.0, 25, 100},
             {"fraction cut", "one", 1, 0.1f, 1009, 1.0, 100, 100},
             {"in single precision", "one", 1, 0.7f, 100, 1.0, 70, 70},
             {"below a point of the height cut", "1\n2\n3", 1, 0.019f, 100, 0.5, 0, 16},
             {"other modes are relative too", "one", 2, 0.2f, 100, 1.0, 20, 20},
         })
    {
        ztPlatform::setDpiScale(1.0, dpi);
        QImage const image = toQImage(render(makeText(text, size, sizeMode), targetHeight));
        QImage const absolute = toQImage(render(makeText(text, float(points))));
        EXPECT_EQ(image, absolute.scaledToHeight(height, Qt::SmoothTransformation)) << name;
    }
}

TEST_F(TextRasterTest, ExtremeSettingsAreDefined)
{
    float const infinity = std::numeric_limits<float>::infinity(), nan = std::nanf("");
    constexpr int most = std::numeric_limits<int>::max();
    for (float size : {0.0f, -1.0f, -infinity, infinity, nan, 3e9f, 1e30f})
        for (int sizeMode : {0, 1})
            for (int targetHeight : {0, -5, 600, most})
            {
                osg::OverlayPtr const overlay = makeText("Wi", size, sizeMode);
                overlay->offset = {size, -size};
                ztOverlays::updateOverlay(overlay, most, targetHeight);
                osg::ImagePtr const image = shownImage(overlay);
                EXPECT_EQ(image->pixels.size(), std::size_t(image->width * image->height * 4)) << size;
            }
    EXPECT_EQ(render(makeText(std::string(200, 'W'), 2000))->height, 0) << "a rendering of 2 GiB and more isn't made";
    EXPECT_EQ(render(makeText("Wi", 500, osg::Overlay::SizeRelative))->height, 0) << "nor scaled to";
    osg::OverlayPtr const breaks = makeText("\n\n");
    breaks->textColor = {-3, 7, infinity, nan};
    breaks->backgroundColor = breaks->backgroundTransparency = {-3, 7, nan};
    EXPECT_EQ(render(breaks)->width, 0);
    EXPECT_FALSE(breaks->dirty);
}

TEST_F(TextRasterTest, WhatHasNothingToDrawIsClear)
{
    osg::OverlayPtr const overlay = makeText("");
    osg::ImagePtr const image = render(overlay);
    image->pixels.assign(image->pixels.size(), 255);
    EXPECT_EQ(render(overlay)->pixels, makeImage(16, 16)->pixels);
}
