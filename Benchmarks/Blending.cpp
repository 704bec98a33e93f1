// Blending a picture over another, as ztImage::blendImage() does.
#include "Benchmark.h"
#include "Pictures.h"
#include "ztImage.h"

#include <QPainter>

#ifdef ZT_HAS_PIXMAN
#include <pixman.h>
#endif

#include <cstring>

namespace ztBenchmarks
{

namespace
{

/// The same pixels for all contenders: rows top first, which none of them looks at.
struct Blending
{
    Blending(QImage const& above, QSize const& size, QPoint const& place)
        : source(above), target(randomPicture(size.width(), size.height())),
          covered(QRect(place, above.size()) & target.rect()), position(place)
    {
    }

    void blend()
    {
        ztImage::blendImage(*targetImage, *sourceImage, {float(position.x()), float(position.y()), 0.0f},
                            {1.0f, 1.0f, 1.0f, 1.0f}, 1.0f, 0.0f);
    }

    void paint() { QPainter(&target).drawImage(position, source); }

    void copy()
    {
        QPoint const first = covered.topLeft() - position;
        for (int y = 0; y < covered.height(); ++y)
            std::memcpy(rowOf(target, covered.topLeft(), y), rowOf(source, first, y), std::size_t(covered.width()) * 4);
    }

#ifdef ZT_HAS_PIXMAN
    static std::shared_ptr<pixman_image_t> wrapped(QImage& image)
    {
        auto* const words = reinterpret_cast<std::uint32_t*>(image.bits());
        return {pixman_image_create_bits(PIXMAN_a8b8g8r8, image.width(), image.height(), words, image.bytesPerLine()),
                pixman_image_unref};
    }

    void composite()
    {
        pixman_image_composite32(PIXMAN_OP_OVER, pixmanSource.get(), nullptr, pixmanTarget.get(), 0, 0, 0, 0,
                                 position.x(), position.y(), source.width(), source.height());
    }
#endif

    static uchar* rowOf(QImage const& image, QPoint const& first, int row)
    {
        return const_cast<uchar*>(image.constScanLine(first.y() + row)) + first.x() * 4;
    }

    QImage source, target;
    QRect covered;
    QPoint position;
    std::shared_ptr<osg::ImagePtr> sourceImage = makeImage(&source), targetImage = makeImage(&target);
#ifdef ZT_HAS_PIXMAN
    std::shared_ptr<pixman_image_t> pixmanSource = wrapped(source), pixmanTarget = wrapped(target);
#endif
};

Contenders contendersOf(QImage const& source, QSize const& target, QPoint const& position)
{
    auto const blending = std::make_shared<Blending>(source, target, position);
    std::function<Sample()> pixman;
#ifdef ZT_HAS_PIXMAN
    pixman = [=] { return timed([&] { blending->composite(); }); };
#endif
    return {{"ours", [=] { return timed([&] { blending->blend(); }); }},
            {"QPainter", [=] { return timed([&] { blending->paint(); }); }},
            {"pixman", pixman},
            {"memcpy", [=] { return timed([&] { blending->copy(); }); }}};
}

QImage renderedLabel()
{
    QImage label(360, 48, QImage::Format_RGBA8888_Premultiplied);
    label.fill(Qt::transparent);
    QPainter painter(&label);
    painter.setFont(QFont("DejaVu Sans", 20));
    painter.setPen(Qt::white);
    painter.drawText(label.rect(), Qt::AlignCenter, "Take 3, late light");
    return label;
}

} // namespace

Cases blendingCases()
{
    Cases cases;
    for (int const side : {64, 256, 1024, 2048})
    {
        QSize const size(side, side);
        auto const add = [&](char const* what, int alpha, QPoint const& position = {}) {
            cases.push_back({"blend " + std::to_string(side) + "x" + std::to_string(side) + ", " + what,
                             [=] { return contendersOf(randomPicture(side, side, alpha), size, position); }});
        };
        add("alpha at random", -1);
        add("opaque", 255);
        add("transparent", 0);
        add("cut at two edges", -1, {side / 3, -side / 3});
    }
    cases.push_back({"blend a label onto 1920x1080", [] {
                         return contendersOf(renderedLabel(), {1920, 1080}, {1500, 77});
                     }});
    return cases;
}

} // namespace ztBenchmarks
