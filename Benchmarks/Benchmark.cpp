// Serves the driver, run.py. Lines on the standard input ask, lines of JSON on the standard output answer:
//   cases                     the names of all cases
//   open CASE                 the contenders of a case, which is the open one from then on
//   measure CONTENDER         a sample of a contender of the open case
//   picture CONTENDER FILE    writes the bytes of the picture that it makes
#include "Benchmark.h"

#include <QGuiApplication>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <iostream>
#include <sstream>

namespace ztBenchmarks
{

namespace
{

bool isTrial = false;

double secondsOf(std::function<void()> const& work, long runs)
{
    auto const start = std::chrono::steady_clock::now();
    for (long i = 0; i < runs; ++i)
        work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Cases allCases()
{
    Cases all;
    for (Cases const& topic :
         {textCases(), blendingCases(), scalingCases(), stampingCases(), drawingCases(), frameCases()})
        all.insert(all.end(), topic.begin(), topic.end());
    return all;
}

template <class Named>
Named const& find(std::vector<Named> const& all, std::string const& name)
{
    return *std::find_if(all.begin(), all.end(), [&name](Named const& one) { return one.name == name; });
}

std::string toJson(Cases const& cases)
{
    std::ostringstream json;
    for (Case const& one : cases)
        json << (json.tellp() > 0 ? "," : "") << '"' << one.name << '"';
    return "[" + json.str() + "]";
}

std::string toJson(Contenders const& contenders)
{
    std::ostringstream json;
    for (Contender const& one : contenders)
        json << (json.tellp() > 0 ? "," : "") << std::boolalpha << R"({"name":")" << one.name << R"(","measures":)"
             << bool(one.measure) << R"(,"draws":)" << bool(one.picture) << '}';
    return "[" + json.str() + "]";
}

std::string toJson(Sample const& sample)
{
    std::ostringstream json;
    json.precision(9);
    json << R"({"seconds":)" << sample.seconds;
    for (auto const& [name, value] : sample.facts)
        json << ",\"" << name << "\":" << value;
    return json.str() + "}";
}

void write(std::vector<osg::UInt8> const& bytes, std::string const& path)
{
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<char const*>(bytes.data()), std::streamsize(bytes.size()));
}

void serve()
{
    Cases const cases = allCases();
    Contenders open;
    std::string line;
    while (std::getline(std::cin, line))
    {
        std::istringstream words(line);
        std::string request, name, path;
        std::getline(std::getline(std::getline(words, request, '\t'), name, '\t'), path);
        if (request == "cases")
            std::cout << toJson(cases) << std::endl;
        else if (request == "open")
        {
            open.clear(); // before the next one needs the memory
            open = find(cases, name).make();
            std::cout << toJson(open) << std::endl;
        }
        else if (request == "measure")
            std::cout << toJson(find(open, name).measure()) << std::endl;
        else if (request == "picture")
        {
            write(find(open, name).picture(), path);
            std::cout << "{}" << std::endl;
        }
    }
}

} // namespace

Sample timedOnce(std::function<void()> const& work, double items)
{
    return {secondsOf(work, 1) / items, {}};
}

Sample timed(std::function<void()> const& work, double items)
{
    constexpr double enough = 0.02;
    long runs = 1;
    double seconds = secondsOf(work, runs);
    while (!isTrial && seconds < enough)
    {
        runs = std::max(2 * runs, long(1.2 * enough / std::max(seconds, 1e-9) * double(runs)));
        seconds = secondsOf(work, runs);
    }
    return {seconds / double(runs) / items, {}};
}

} // namespace ztBenchmarks

int main(int argc, char** argv)
{
    ztBenchmarks::isTrial = argc > 1 && std::string(argv[1]) == "--try";
    qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) {});
    QGuiApplication const application(argc, argv);
    ztBenchmarks::serve();
}
