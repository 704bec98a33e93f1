// Stamping the sample overlays onto an image of a size.
#include "BareText.h"
#include "Benchmark.h"
#include "Scene.h"
#include "ztOverlayUtils.h"

namespace ztBenchmarks
{

namespace
{

using ztExamples::Scene;

/// The sample overlays, the current scene while this lives, and a frame to stamp them onto.
struct Stamping
{
    explicit Stamping(QSize const& size)
        : scene(ztExamples::readOverlayFile(ZT_SAMPLE_DATA "/overlays.json")),
          frame(size, QImage::Format_RGBA8888_Premultiplied)
    {
        scene.setValues({"frame_0012.png", 12, 240});
        ztOverlays::getAllVisibleOverlays(overlays);
        frame.fill(QColor(90, 110, 130));
        logo = logo.convertToFormat(frame.format());
        scene.stamp(frame, osg::NullFC);
    }

    bool isText(osg::OverlayPtr const& overlay) const { return overlay->contentType == osg::Overlay::ContentText; }

    void stamp() { scene.stamp(frame, osg::NullFC); }

    void stampFirst()
    {
        for (osg::OverlayPtr const& overlay : overlays)
            osg::markChanged(overlay, osg::Overlay::TextFieldMask);
        stamp();
    }

    void renderAndStamp()
    {
        for (osg::OverlayPtr const& overlay : overlays)
            if (isText(overlay))
                renderWithQt(*overlay, frame.height());
        stamp();
    }

    void paint()
    {
        QPainter painter(&frame);
        for (osg::OverlayPtr const& overlay : overlays)
            if (isText(overlay))
                paintWithQt(painter, *overlay, frame.size());
            else
                paintPicture(painter, *overlay);
    }

    void paintPicture(QPainter& painter, osg::Overlay const& overlay) const
    {
        osg::Pnt2f const low = overlay.foreground->positions[0], high = overlay.foreground->positions[2];
        QSize const size(int(high.x - low.x), int(high.y - low.y));
        painter.drawImage(QPointF(double(low.x), frame.height() - double(high.y)),
                          logo.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    }

    Scene scene;
    std::vector<osg::OverlayPtr> overlays;
    QImage frame;
    QImage logo{ZT_SAMPLE_DATA "/logo.png"};
};

Contenders first(QSize const& size)
{
    auto const stamping = std::make_shared<Stamping>(size);
    return {{"ours", [=] { return timed([&] { stamping->stampFirst(); }); }},
            {"Qt's calls and our blends", [=] { return timed([&] { stamping->renderAndStamp(); }); }},
            {"QPainter", [=] { return timed([&] { stamping->paint(); }); }}};
}

Contenders repeated(QSize const& size)
{
    auto const stamping = std::make_shared<Stamping>(size);
    return {{"ours", [=] { return timed([&] { stamping->stamp(); }); }},
            {"QPainter", [=] { return timed([&] { stamping->paint(); }); }}};
}

} // namespace

Cases stampingCases()
{
    Cases cases;
    for (QSize const& size : {QSize(1920, 1080), QSize(3840, 2160)})
    {
        std::string const name = "stamp " + std::to_string(size.width()) + "x" + std::to_string(size.height());
        cases.push_back({name + ", first", [=] { return first(size); }});
        cases.push_back({name + ", repeated", [=] { return repeated(size); }});
    }
    return cases;
}

} // namespace ztBenchmarks
