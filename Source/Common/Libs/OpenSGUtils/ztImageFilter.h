/// \file
/// Filters for resampling.
#pragma once

#include "ztOpenSGUtils_export.h"

/// What ztImage::scale() weighs pixels with. Derive from it for other filters.
class ZTOPENSGUTILS_EXPORT ztImageGenericFilter
{
  public:
    explicit ztImageGenericFilter(double radius) : support(radius) {}
    virtual ~ztImageGenericFilter() = default;

    /// The weight of a sample at a distance of `x` from the point that is asked for, in pixels of the coarser image.
    virtual double filter(double x) const = 0;

    /// Radius: samples from beyond this distance don't count. Those at it do if the filter isn't 0 there.
    double support;
};

/// The triangle filter, `support` − |x| within the support and 0 elsewhere. Its support is 1.0 unless written.
class ZTOPENSGUTILS_EXPORT ztImageBilinearFilter : public ztImageGenericFilter
{
  public:
    ztImageBilinearFilter() : ztImageGenericFilter(1.0) {}

    double filter(double x) const override
    {
        double const t = x < 0.0 ? -x : x;
        return t < support ? support - t : 0.0;
    }
};
