#include "ObjFile.h"

#include "Words.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>

namespace ztExamples
{

namespace
{

constexpr std::size_t maxLineLength = 1 << 20;

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

/// From 0, of a number that counts from 1, or from -1 backwards.
std::size_t toIndex(std::string_view word, char const* what, std::size_t count)
{
    long long const size = static_cast<long long>(count);
    long long const number = toNumber<long long>(word).value_or(0);
    if (number == 0 || number > size || number < -size)
        complain("the number of one of the " + std::to_string(count) + " " + what + " above", word);
    return std::size_t(number > 0 ? number - 1 : number + size);
}

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

std::string trimmed(std::string_view text)
{
    return QByteArray::fromRawData(text.data(), int(text.size())).trimmed().toStdString();
}

/// The diffuse colours of materials.
using Materials = std::map<std::string, Color>;

Color toColor(QVector3D const& color)
{
    auto const channel = [](float component) {
        return static_cast<unsigned char>(std::clamp(component, 0.0f, 1.0f) * 255.0f + 0.5f);
    };
    return {channel(color.x()), channel(color.y()), channel(color.z()), 255};
}

void readMaterials(std::istream& stream, Materials& materials)
{
    Color* color = nullptr;
    std::vector<char> buffer(maxLineLength + 1);
    std::string line;
    while (readLine(stream, buffer, line))
    {
        std::string_view rest = line;
        std::string_view const keyword = takeWord(rest);
        if (keyword == "newmtl")
            color = &materials[trimmed(rest)];
        else if (keyword == "Kd" && color)
            *color = toColor(toVector(rest));
    }
}

/// Without the file there are no colours.
void readMaterialFile(QString const& path, Materials& materials)
try
{
    if (!QFileInfo(path).isFile())
        return;
    std::ifstream stream(QFile::encodeName(path).toStdString());
    readMaterials(stream, materials);
}
catch (Complaint const& complaint)
{
    throw Complaint(path.toStdString() + ": " + complaint.what());
}

class Reader
{
  public:
    /// \param folder  where material libraries are, or empty
    explicit Reader(QString folder) : _folder(std::move(folder)) {}

    void readStatement(std::string_view line)
    {
        std::string_view const keyword = takeWord(line);
        if (keyword == "v")
            _parts.positions.push_back(toVector(line));
        else if (keyword == "vn")
            _parts.normals.push_back(toUnit(toVector(line)));
        else if (keyword == "vt")
            ++_texCoordCount;
        else if (keyword == "f")
            readFace(line);
        else if (keyword == "mtllib" && !_folder.isEmpty())
            readMaterialFile(QDir(_folder).filePath(QString::fromStdString(trimmed(line))), _materials);
        else if (keyword == "usemtl")
            _color = colorOf(trimmed(line));
        requireAtMost(maxVertices, _parts.positions.size(), "vertices");
        requireAtMost(maxVertices, _parts.normals.size(), "normals");
    }

    Mesh finish()
    {
        if (_parts.corners.empty())
            throw Complaint("expected a face before the end of the file");
        return assemble(std::move(_parts));
    }

  private:
    Color colorOf(std::string const& material) const
    {
        auto const found = _materials.find(material);
        return found != _materials.end() ? found->second : Color();
    }

    Corner toCorner(std::string_view word) const
    {
        std::string_view rest = word;
        Corner corner{toIndex(takeUntil("/", rest), "vertices", _parts.positions.size()), std::nullopt, _color};
        if (std::string_view const texCoord = takeUntil("/", rest); !texCoord.empty())
            toIndex(texCoord, "texture coordinates", _texCoordCount);
        if (!rest.empty())
            corner.normal = toIndex(rest, "normals", _parts.normals.size());
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
        addPolygon(polygon, _parts);
    }

    QString _folder;
    Materials _materials;
    Color _color{};
    MeshParts _parts;
    std::size_t _texCoordCount = 0;
};

void skipByteOrderMark(std::istream& stream)
{
    for (char const c : {'\xef', '\xbb', '\xbf'})
        if (stream.peek() == std::istream::traits_type::to_int_type(c))
            stream.get();
}

} // namespace

Mesh readObj(std::istream& stream, QString const& folder)
{
    Reader reader(folder);
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
    Mesh mesh = readObj(stream, QFileInfo(path).path());
    if (stream.bad())
        throw Complaint(std::string("can't read it: ") + std::strerror(errno));
    return mesh;
}
catch (Complaint const& complaint)
{
    throw Complaint(path.toStdString() + ": " + complaint.what());
}

} // namespace ztExamples
