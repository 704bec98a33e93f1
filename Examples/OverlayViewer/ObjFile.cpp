#include "ObjFile.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace ztExamples
{

namespace
{

constexpr std::size_t maxTriangles = 10000000;
constexpr std::size_t maxVertices = 3 * maxTriangles;
constexpr std::size_t maxLineLength = 1 << 20;

/// Thrown with what was expected and what is there instead. Whoever knows the place adds it.
using Complaint = std::runtime_error;

[[noreturn]] void complain(std::string const& expected, std::string_view found)
{
    constexpr std::size_t maxLength = 60;
    std::string const shown(found.substr(0, maxLength));
    throw Complaint("expected " + expected + ", got \"" + shown + (found.size() > maxLength ? "..." : "") + '"');
}

void requireAtMost(std::size_t most, std::size_t count, char const* what)
{
    if (count > most)
        throw Complaint("expected " + std::to_string(most) + " " + what + " at most");
}

/// Takes the text up to a separator, and that too, off the front.
std::string_view takeUntil(char const* separators, std::string_view& text)
{
    std::size_t const end = std::min(text.find_first_of(separators), text.size());
    std::string_view const part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

/// Empty at the end.
std::string_view takeWord(std::string_view& text)
{
    constexpr char blanks[] = " \t\r";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return takeUntil(blanks, text);
}

template <class T>
std::optional<T> toNumber(std::string_view word)
{
    if (word.substr(0, 1) == "+")
        word.remove_prefix(1);
    T value;
    auto const [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return error == std::errc() && end == word.data() + word.size() ? std::optional(value) : std::nullopt;
}

bool fitsFloat(double value)
{
    return std::abs(value) <= double(std::numeric_limits<float>::max());
}

QVector3D toVector(std::string_view text)
{
    std::string_view rest = text;
    QVector3D vector;
    for (int i = 0; i < 3; ++i)
    {
        std::optional<double> const number = toNumber<double>(takeWord(rest));
        if (!number || !fitsFloat(*number))
            complain("three numbers", text);
        vector[i] = float(*number);
    }
    return vector;
}

/// A vector of length 1 in the direction of another, however short that is; zero for zero.
QVector3D toUnit(QVector3D const& vector)
{
    double const x = double(vector.x()), y = double(vector.y()), z = double(vector.z());
    double const length = std::sqrt(x * x + y * y + z * z);
    return length > 0.0 ? QVector3D(float(x / length), float(y / length), float(z / length)) : vector;
}

/// From 0, of a number that counts from 1, or from -1 backwards.
std::size_t toIndex(std::string_view word, char const* what, std::size_t count)
{
    long long const size = static_cast<long long>(count);
    long long const number = toNumber<long long>(word).value_or(0);
    if (number == 0 || number > size || number < -size)
        complain("the number of one of the " + std::to_string(count) + " " + what + " above", word);
    return std::size_t(number > 0 ? number - 1 : number + size);
}

struct Corner
{
    std::size_t position;
    std::optional<std::size_t> normal;
};

class Reader
{
  public:
    void readStatement(std::string_view line)
    {
        std::string_view const keyword = takeWord(line);
        if (keyword == "v")
            _positions.push_back(toVector(line));
        else if (keyword == "vn")
            _normals.push_back(toUnit(toVector(line)));
        else if (keyword == "vt")
            ++_texCoordCount;
        else if (keyword == "f")
            readFace(line);
        requireAtMost(maxVertices, _positions.size(), "vertices");
        requireAtMost(maxVertices, _normals.size(), "normals");
    }

    Mesh finish()
    {
        if (_corners.empty())
            throw Complaint("expected a face before the end of the file");
        fitPositions();
        std::vector<QVector3D> const computed = computeNormals();
        Mesh mesh;
        mesh.reserve(_corners.size());
        for (Corner const& corner : _corners)
            mesh.push_back(
                {_positions[corner.position], corner.normal ? _normals[*corner.normal] : computed[corner.position]});
        return mesh;
    }

  private:
    Corner toCorner(std::string_view word) const
    {
        std::string_view rest = word;
        Corner corner{toIndex(takeUntil("/", rest), "vertices", _positions.size()), std::nullopt};
        if (std::string_view const texCoord = takeUntil("/", rest); !texCoord.empty())
            toIndex(texCoord, "texture coordinates", _texCoordCount);
        if (!rest.empty())
            corner.normal = toIndex(rest, "normals", _normals.size());
        return corner;
    }

    void readFace(std::string_view text)
    {
        std::string_view rest = text;
        std::vector<Corner> polygon;
        for (std::string_view word = takeWord(rest); !word.empty(); word = takeWord(rest))
            polygon.push_back(toCorner(word));
        if (polygon.size() < 3)
            complain("three or more corners", text);
        requireAtMost(maxTriangles, _corners.size() / 3 + polygon.size() - 2, "triangles");
        for (std::size_t i = 2; i < polygon.size(); ++i)
            _corners.insert(_corners.end(), {polygon[0], polygon[i - 1], polygon[i]});
    }

    /// In double precision, in which the differences of single ones don't overflow.
    void fitPositions()
    {
        double low[3], high[3], squares = 0.0;
        for (int i = 0; i < 3; ++i)
        {
            auto const [least, greatest] =
                std::minmax_element(_positions.begin(), _positions.end(),
                                    [i](QVector3D const& a, QVector3D const& b) { return a[i] < b[i]; });
            low[i] = double((*least)[i]);
            high[i] = double((*greatest)[i]);
            squares += (high[i] - low[i]) * (high[i] - low[i]);
        }
        double const radius = squares > 0.0 ? std::sqrt(squares) / 2.0 : 1.0;
        for (QVector3D& position : _positions)
            for (int i = 0; i < 3; ++i)
                position[i] = float((double(position[i]) - (low[i] + high[i]) / 2.0) / radius);
    }

    /// For each position, of the triangles there, each weighted by its area.
    std::vector<QVector3D> computeNormals() const
    {
        std::vector<QVector3D> normals(_positions.size());
        for (std::size_t i = 0; i < _corners.size(); i += 3)
        {
            QVector3D const& a = _positions[_corners[i].position];
            QVector3D const normal = QVector3D::crossProduct(_positions[_corners[i + 1].position] - a,
                                                             _positions[_corners[i + 2].position] - a);
            for (std::size_t j = i; j < i + 3; ++j)
                normals[_corners[j].position] += normal;
        }
        for (QVector3D& normal : normals)
            normal = toUnit(normal);
        return normals;
    }

    std::vector<QVector3D> _positions;
    std::vector<QVector3D> _normals;
    std::size_t _texCoordCount = 0;
    std::vector<Corner> _corners;
};

void requireLength(bool isShort)
{
    if (!isShort)
        throw Complaint("expected " + std::to_string(maxLineLength) + " bytes at most");
}

/// A line of the stream, in the buffer. \return whether there is one
bool takeLine(std::istream& stream, std::vector<char>& buffer, std::string_view& line)
{
    stream.getline(buffer.data(), std::streamsize(buffer.size()));
    requireLength(!stream.fail() || stream.eof() || stream.bad());
    if (stream.fail())
        return false;
    line = std::string_view(buffer.data(), std::size_t(stream.gcount()) - (stream.eof() ? 0 : 1));
    return true;
}

/// A line without its comment, with those behind it that it goes on in. \return how many lines were read
std::size_t readLine(std::istream& stream, std::vector<char>& buffer, std::string& line)
{
    std::size_t count = 0;
    line.clear();
    for (std::string_view part; takeLine(stream, buffer, part);)
    {
        ++count;
        if (!part.empty() && part.back() == '\r')
            part.remove_suffix(1);
        line += part.substr(0, part.find('#'));
        requireLength(line.size() < buffer.size());
        if (line.empty() || line.back() != '\\')
            break;
        line.back() = ' ';
    }
    return count;
}

void skipByteOrderMark(std::istream& stream)
{
    for (char const c : {'\xef', '\xbb', '\xbf'})
        if (stream.peek() == std::istream::traits_type::to_int_type(c))
            stream.get();
}

} // namespace

Mesh readObj(std::istream& stream)
{
    Reader reader;
    std::size_t lineNumber = 1;
    skipByteOrderMark(stream);
    try
    {
        std::vector<char> buffer(maxLineLength + 1);
        std::string line;
        while (std::size_t const count = readLine(stream, buffer, line))
        {
            reader.readStatement(line);
            lineNumber += count;
        }
        return reader.finish();
    }
    catch (Complaint const& complaint)
    {
        throw Complaint("line " + std::to_string(lineNumber) + ": " + complaint.what());
    }
}

Mesh readObjFile(QString const& path)
try
{
    std::ifstream stream(QFile::encodeName(path).toStdString());
    stream.peek(); // opens a folder, but doesn't read it
    if (!stream.is_open() || stream.bad())
        throw Complaint(std::string("can't read it: ") + std::strerror(errno));
    Mesh mesh = readObj(stream);
    if (stream.bad())
        throw Complaint(std::string("can't read it: ") + std::strerror(errno));
    return mesh;
}
catch (Complaint const& complaint)
{
    throw Complaint(path.toStdString() + ": " + complaint.what());
}

} // namespace ztExamples
