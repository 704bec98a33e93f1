#include "MeshFile.h"
#include "Words.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <map>

namespace ztExamples
{

namespace
{

constexpr char blanks[] = " \t\r\n";

enum class Encoding
{
    Text,
    LittleEndian,
    BigEndian
};

/// Takes a number off the front of a file's rest.
using TakeNumber = double (*)(std::string_view& rest, Encoding encoding);

double takeTextNumber(std::string_view& rest)
{
    std::string_view const word = takeWord(rest, blanks);
    std::optional<double> const number = toNumber<double>(word);
    if (!number || !fitsFloat(*number))
        complain("a number", word);
    return *number;
}

template <class T>
double takeNumber(std::string_view& rest, Encoding encoding)
{
    if (encoding == Encoding::Text)
        return takeTextNumber(rest);
    if (rest.size() < sizeof(T))
        throw Complaint("expected more numbers before the end of the file");
    void const* const bytes = rest.data();
    T const number = encoding == Encoding::BigEndian ? qFromBigEndian<T>(bytes) : qFromLittleEndian<T>(bytes);
    rest.remove_prefix(sizeof(T));
    if (!fitsFloat(double(number)))
        throw Complaint("expected finite numbers");
    return double(number);
}

struct Type
{
    TakeNumber take;
    /// What stands for full light in a colour.
    double whole;
};

Type toType(std::string_view name)
{
    static std::map<std::string_view, Type> const types = {
        {"char", {takeNumber<qint8>, 127}},       {"int8", {takeNumber<qint8>, 127}},
        {"uchar", {takeNumber<quint8>, 255}},     {"uint8", {takeNumber<quint8>, 255}},
        {"short", {takeNumber<qint16>, 32767}},   {"int16", {takeNumber<qint16>, 32767}},
        {"ushort", {takeNumber<quint16>, 65535}}, {"uint16", {takeNumber<quint16>, 65535}},
        {"int", {takeNumber<qint32>, 255}},       {"int32", {takeNumber<qint32>, 255}},
        {"uint", {takeNumber<quint32>, 255}},     {"uint32", {takeNumber<quint32>, 255}},
        {"float", {takeNumber<float>, 1}},        {"float32", {takeNumber<float>, 1}},
        {"double", {takeNumber<double>, 1}},      {"float64", {takeNumber<double>, 1}},
    };
    auto const found = types.find(name);
    if (found == types.end())
        complain("a type of numbers", name);
    return found->second;
}

constexpr std::string_view fieldNames[] = {"x", "y", "z", "nx", "ny", "nz", "red", "green", "blue"};
constexpr std::size_t firstNormal = 3, firstColor = 6, fieldCount = std::size(fieldNames);

struct Property
{
    std::string name;
    /// Where a vertex has it: one of `fieldNames`, or their number.
    std::size_t field;
    Type type;
    /// Of how many numbers there are, in a list; else none.
    std::optional<Type> countType;
};

struct Element
{
    std::string name;
    std::size_t count;
    std::vector<Property> properties;
};

struct Header
{
    Encoding encoding = Encoding::Text;
    std::vector<Element> elements;
};

Encoding toEncoding(std::string_view name)
{
    if (name == "ascii")
        return Encoding::Text;
    if (name != "binary_little_endian" && name != "binary_big_endian")
        complain("ascii, binary_little_endian or binary_big_endian", name);
    return name == "binary_big_endian" ? Encoding::BigEndian : Encoding::LittleEndian;
}

std::size_t toCount(std::string_view word)
{
    std::optional<unsigned> const count = toNumber<unsigned>(word);
    if (!count)
        complain("how many there are", word);
    return *count;
}

Property toProperty(std::string_view line)
{
    std::string_view word = takeWord(line);
    std::optional<Type> countType;
    if (word == "list")
    {
        countType = toType(takeWord(line));
        word = takeWord(line);
    }
    Type const type = toType(word);
    std::string_view const name = takeWord(line);
    auto const field =
        std::size_t(std::find(std::begin(fieldNames), std::end(fieldNames), name) - std::begin(fieldNames));
    return {std::string(name), field, type, countType};
}

void readHeaderLine(std::string_view line, Header& header)
{
    std::string_view const whole = line, keyword = takeWord(line);
    if (keyword == "format")
        header.encoding = toEncoding(takeWord(line));
    else if (keyword == "element")
    {
        std::string const name(takeWord(line));
        header.elements.push_back({name, toCount(takeWord(line)), {}});
    }
    else if (keyword == "property" && !header.elements.empty())
        header.elements.back().properties.push_back(toProperty(line));
    else if (keyword != "comment" && keyword != "obj_info")
        complain("a line of the header", whole);
}

Header takeHeader(std::string_view& rest)
{
    if (std::string_view first = takeUntil("\n", rest); takeWord(first) != "ply")
        throw Complaint("expected \"ply\" at the beginning");
    Header header;
    for (;;)
    {
        if (rest.empty())
            throw Complaint("expected \"end_header\" before the end of the file");
        std::string_view const line = takeUntil("\n", rest);
        if (std::string_view words = line; takeWord(words) == "end_header")
            return header;
        readHeaderLine(line, header);
    }
}

class Reader
{
  public:
    explicit Reader(std::string_view& rest) : _rest(rest), _header(takeHeader(rest)) {}

    Mesh read()
    {
        for (Element const& element : _header.elements)
            for (std::size_t i = 0; i < element.count && !element.properties.empty(); ++i)
                readOne(element);
        if (_parts.corners.empty())
            throw Complaint("expected a face before the end of the file");
        return assemble(std::move(_parts));
    }

  private:
    double take(Type const& type) { return type.take(_rest, _header.encoding); }

    void readOne(Element const& element)
    {
        std::array<float, fieldCount + 1> vertex{};
        bool hasColor = false;
        for (Property const& property : element.properties)
        {
            if (property.countType)
            {
                readList(property, element.name == "face");
                continue;
            }
            bool const isColor = property.field >= firstColor && property.field < fieldCount;
            hasColor = hasColor || isColor;
            double const number = take(property.type);
            vertex[property.field] = float(isColor ? 255.0 * number / property.type.whole : number);
        }
        if (element.name == "vertex")
            addVertex(vertex, hasColor);
    }

    void addVertex(std::array<float, fieldCount + 1> const& vertex, bool hasColor)
    {
        auto const vectorAt = [&vertex](std::size_t i) { return QVector3D(vertex[i], vertex[i + 1], vertex[i + 2]); };
        auto const channel = [&vertex](std::size_t i) {
            return static_cast<unsigned char>(std::clamp(vertex[firstColor + i], 0.0f, 255.0f) + 0.5f);
        };
        requireAtMost(maxVertices, _parts.positions.size(), "vertices");
        _parts.positions.push_back(vectorAt(0));
        _parts.normals.push_back(toUnit(vectorAt(firstNormal)));
        _colors.push_back(hasColor ? Color{channel(0), channel(1), channel(2), 255} : Color{});
    }

    void readList(Property const& property, bool isOfFace)
    {
        double const size = take(*property.countType);
        bool const isPolygon = isOfFace && (property.name == "vertex_indices" || property.name == "vertex_index");
        if (size < (isPolygon ? 3.0 : 0.0))
            throw Complaint("expected three or more corners, got " + std::to_string(static_cast<long long>(size)));
        std::vector<Corner> polygon;
        for (double i = 0.0; i < size; ++i)
        {
            double const number = take(property.type);
            if (isPolygon)
                polygon.push_back(toCorner(number));
        }
        if (isPolygon)
            addPolygon(polygon, _parts);
    }

    Corner toCorner(double number) const
    {
        if (!(number >= 0.0 && number < double(_parts.positions.size())) || number != std::floor(number))
            throw Complaint("expected the number of one of the " + std::to_string(_parts.positions.size()) +
                            " vertices above, counted from 0");
        auto const vertex = std::size_t(number);
        bool const hasNormal = !_parts.normals[vertex].isNull();
        return {vertex, hasNormal ? std::optional(vertex) : std::nullopt, _colors[vertex]};
    }

    std::string_view& _rest;
    Header _header;
    MeshParts _parts;
    std::vector<Color> _colors;
};

bool isText(std::string_view bytes)
{
    return bytes.find("format ascii") < bytes.find("end_header");
}

} // namespace

Mesh readPly(QByteArray const& bytes)
{
    std::string_view const whole(bytes.constData(), std::size_t(bytes.size()));
    std::string_view rest = whole;
    try
    {
        return Reader(rest).read();
    }
    catch (Complaint const& complaint)
    {
        if (!isText(whole))
            throw;
        throw Complaint("line " + std::to_string(lineBefore(whole, rest)) + ": " + complaint.what());
    }
}

} // namespace ztExamples
