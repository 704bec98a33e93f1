// Scaling a picture, as ztImage::scale() does, with the filter that is linear between neighbours.
#include "Benchmark.h"
#include "Pictures.h"
#include "ztImage.h"

#include <QThreadPool>

#ifdef ZT_HAS_VIPS
#include <vips/vips.h>
#endif

namespace ztBenchmarks
{

namespace
{

using Picture = std::vector<osg::UInt8>;

Picture bytesOf(QImage const& image)
{
    Picture bytes;
    for (int y = 0; y < image.height(); ++y)
        bytes.insert(bytes.end(), image.constScanLine(y), image.constScanLine(y) + 4 * image.width());
    return bytes;
}

struct Scaling
{
    Scaling(QSize const& from, QSize const& to) : source(randomPicture(from.width(), from.height())), size(to) {}

    void scale() { ztImage::scale(*sourceImage, size.width(), size.height(), *scaledImage, ztImageBilinearFilter()); }

    QImage scaleWithQt() const { return source.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation); }

    QImage source;
    QSize size;
    std::shared_ptr<osg::ImagePtr> sourceImage = makeImage(&source), scaledImage = makeImage();
};

/// Keeps Qt to one thread besides the caller, which waits.
struct OneThread
{
    OneThread() { QThreadPool::globalInstance()->setMaxThreadCount(1); }
    OneThread(OneThread const&) = delete;
    ~OneThread() { QThreadPool::globalInstance()->setMaxThreadCount(before); }

    int before = QThreadPool::globalInstance()->maxThreadCount();
};

Contender vips(std::shared_ptr<Scaling> const& scaling)
{
    Contender vips{"libvips", {}};
#ifdef ZT_HAS_VIPS
    vips_init("");
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    std::shared_ptr<VipsImage> const source(
        vips_image_new_from_memory(scaling->source.constBits(), std::size_t(scaling->source.sizeInBytes()),
                                   scaling->source.width(), scaling->source.height(), 4, VIPS_FORMAT_UCHAR),
        g_object_unref);
    double const scaleX = double(scaling->size.width()) / scaling->source.width();
    double const scaleY = double(scaling->size.height()) / scaling->source.height();
    auto const scale = [=] {
        VipsImage* scaled = nullptr;
        vips_resize(source.get(), &scaled, scaleX, "vscale", scaleY, "kernel", VIPS_KERNEL_LINEAR, nullptr);
        std::size_t size = 0;
        std::shared_ptr<void> const bytes(vips_image_write_to_memory(scaled, &size), g_free);
        g_object_unref(scaled);
        return bytes;
    };
    vips.measure = [=] { return timed([&] { scale(); }); };
    vips.picture = [=] {
        auto const bytes = scale();
        auto const first = static_cast<osg::UInt8 const*>(bytes.get());
        return Picture(first, first + scaling->size.width() * scaling->size.height() * 4);
    };
#else
    (void)scaling;
#endif
    return vips;
}

Contenders contendersOf(QSize const& from, QSize const& to)
{
    auto const scaling = std::make_shared<Scaling>(from, to);
    auto const scale = [=] {
        scaling->scale();
        return (*scaling->scaledImage)->pixels;
    };
    auto const measureQt = [=] {
        OneThread const limit;
        return timed([&] { scaling->scaleWithQt(); });
    };
    return {{"ours", [=] { return timed([&] { scaling->scale(); }); }, scale},
            vips(scaling),
            {"Qt, smooth", measureQt, [=] { return bytesOf(scaling->scaleWithQt()); }},
            {"source", {}, [=] { return bytesOf(scaling->source); }}};
}

std::string named(QSize const& size)
{
    return std::to_string(size.width()) + "x" + std::to_string(size.height());
}

} // namespace

Cases scalingCases()
{
    Cases cases;
    for (auto const& [from, to] : {std::pair{QSize(1920, 1080), QSize(1280, 720)},
                                   {{512, 512}, {200, 200}},
                                   {{256, 256}, {1024, 1024}},
                                   {{4096, 4096}, {256, 256}},
                                   {{1000, 10}, {10, 1000}},
                                   {{1000, 800}, {1000, 300}},
                                   {{1000, 800}, {300, 800}},
                                   {{1000, 300}, {1000, 800}},
                                   {{300, 1000}, {800, 1000}}})
        cases.push_back(
            {"scale " + named(from) + " to " + named(to), [from = from, to = to] { return contendersOf(from, to); }});
    return cases;
}

} // namespace ztBenchmarks
