/// \file
/// What a benchmark is made of: cases, and in each the contenders that do the same work.
///
/// Each topic is a source file with one function that returns its cases. The driver, run.py, lets the contenders of a
/// case measure in turn and compares them.
#pragma once

#include "OSGBase.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ztBenchmarks
{

/// One measurement.
struct Sample
{
    /// Of one item of the work.
    double seconds;
    /// What else is to be told, by its name: allocations, bytes.
    std::map<std::string, double> facts;
};

/// One way to do a case's work: ours, or a peer's.
struct Contender
{
    std::string name;
    /// Empty for a peer that isn't installed.
    std::function<Sample()> measure;
    /// The picture that the work makes, four bytes a pixel, if the driver is to judge it. A contender named "source"
    /// has only that: the picture that the work starts from.
    std::function<std::vector<osg::UInt8>()> picture = {};
};

/// Ours first.
using Contenders = std::vector<Contender>;

struct Case
{
    std::string name;
    /// Called before the case's first measurement; what the contenders hold goes with them after the last.
    std::function<Contenders()> make;
};

using Cases = std::vector<Case>;

/// Repeats some work for long enough to be measured, or, if benchmarks are only tried out, does it once.
/// \param items  in one run of the work
Sample timed(std::function<void()> const& work, double items = 1.0);

/// Of one run of some work that can't be repeated.
Sample timedOnce(std::function<void()> const& work, double items = 1.0);

Cases blendingCases();
Cases drawingCases();
Cases frameCases();
Cases scalingCases();
Cases stampingCases();
Cases textCases();

} // namespace ztBenchmarks
