#include "Guides.h"

#include <algorithm>
#include <cmath>

namespace ztExamples
{

namespace
{

/// A length that is a fraction of another one.
int part(double fraction, int whole)
{
    return int(std::lround(std::clamp(fraction, 0.0, 1.0) * whole));
}

QRect inMiddle(QSize const& size, QSize const& frame)
{
    return {QPoint((frame.width() - size.width()) / 2, (frame.height() - size.height()) / 2), size};
}

/// What a rectangle leaves of one around it.
void addRing(QRect const& outer, QRect const& inner, std::vector<QRect>& rectangles)
{
    int const below = inner.y() - outer.y(), left = inner.x() - outer.x();
    int const above = outer.height() - below - inner.height(), right = outer.width() - left - inner.width();
    rectangles.insert(rectangles.end(), {QRect(outer.x(), outer.y(), outer.width(), below),
                                         QRect(outer.x(), inner.y() + inner.height(), outer.width(), above),
                                         QRect(outer.x(), inner.y(), left, inner.height()),
                                         QRect(inner.x() + inner.width(), inner.y(), right, inner.height())});
}

std::vector<QRect> layOutLetterbox(Guide const& guide, QSize const& frame, QSize const&)
{
    double const aspect = double(*guide.aspect);
    QSize const size(part(frame.height() * aspect / frame.width(), frame.width()),
                     part(frame.width() / aspect / frame.height(), frame.height()));
    std::vector<QRect> rectangles;
    addRing({QPoint(0, 0), frame}, inMiddle(size, frame), rectangles);
    return rectangles;
}

std::vector<QRect> layOutSafe(Guide const& guide, QSize const& frame, QSize const& line)
{
    std::vector<QRect> rectangles;
    for (float const fraction : guide.fractions)
    {
        QRect const outer =
            inMiddle({part(double(fraction), frame.width()), part(double(fraction), frame.height())}, frame);
        int const x = std::min(line.width(), outer.width() / 2), y = std::min(line.height(), outer.height() / 2);
        addRing(outer, outer.adjusted(x, y, -x, -y), rectangles);
    }
    return rectangles;
}

/// The first pixels of the lines between equal parts, and the end.
std::vector<int> linesBetween(int parts, int whole, int line)
{
    std::vector<int> lines;
    int end = 0;
    for (int i = 1; i <= parts; ++i, end = lines.back() + line)
        lines.push_back(std::max(end, int(std::lround(double(whole) * i / parts - (i < parts ? 0.5 * line : 0.0)))));
    return lines;
}

std::vector<QRect> layOutGrid(Guide const& guide, QSize const& frame, QSize const& line)
{
    std::vector<QRect> rectangles;
    int left = 0;
    for (int const right : linesBetween(guide.columns, frame.width(), line.width()))
    {
        for (int const y : linesBetween(guide.rows, frame.height(), line.height()))
            rectangles.emplace_back(left, y, right - left, line.height());
        rectangles.back() = QRect(right, 0, line.width(), frame.height()); // in place of one at the upper edge
        left = right + line.width();
    }
    return rectangles;
}

std::vector<QRect> layOutCross(Guide const& guide, QSize const& frame, QSize const& line)
{
    QRect const middle = inMiddle(line, frame);
    int const arm = std::max(part(double(guide.length), frame.height()) - line.height(), 0) / 2;
    return {middle.adjusted(-arm, 0, arm, 0), QRect(middle.x(), middle.y() - arm, line.width(), arm),
            QRect(middle.x(), middle.y() + line.height(), line.width(), arm)};
}

std::vector<QRect> layOutBar(Guide const& guide, QSize const& frame, QSize const&)
{
    auto const [x, y, width, height] = *guide.rectangle;
    int const left = part(double(x), frame.width()), below = part(double(y), frame.height());
    return {QRect(left, below, part(double(x) + double(width), frame.width()) - left,
                  part(double(y) + double(height), frame.height()) - below)};
}

using LayOut = std::vector<QRect> (*)(Guide const& guide, QSize const& frame, QSize const& line);
constexpr LayOut layOuts[] = {layOutLetterbox, layOutSafe, layOutGrid, layOutCross, layOutBar};

int lineOf(float width, double scale, int frame)
{
    return int(std::lround(std::clamp(double(width) * scale, 1.0, double(frame))));
}

} // namespace

QStringList const& guideNames()
{
    static QStringList const names = {"letterbox", "safe", "grid", "cross", "bar"};
    return names;
}

osg::Color4f colorOf(Guide const& guide)
{
    bool const isArea = guide.kind == Guide::Letterbox || guide.kind == Guide::Bar;
    float const other = isArea ? 0.0f : 1.0f;
    return guide.color.value_or(osg::Color4f{other, other, other, 1.0f});
}

std::vector<QRect> layOut(Guide const& guide, QSize const& frame, QSizeF const& scale)
{
    QSize const line(lineOf(guide.lineWidth, scale.width(), frame.width()),
                     lineOf(guide.lineWidth, scale.height(), frame.height()));
    std::vector<QRect> rectangles = layOuts[*guide.kind](guide, frame, line);
    for (QRect& rectangle : rectangles)
        rectangle &= QRect(QPoint(0, 0), frame);
    return rectangles;
}

} // namespace ztExamples
