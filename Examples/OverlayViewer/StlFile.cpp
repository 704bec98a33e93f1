#include "MeshFile.h"
#include "Words.h"

#include <QtEndian>

namespace ztExamples
{

namespace
{

constexpr std::size_t headerSize = 84, triangleSize = 50, normalSize = 12;

/// The file begins with 80 bytes of any kind and how many triangles follow.
bool isBinary(std::string_view bytes)
{
    return bytes.size() >= headerSize &&
           (bytes.size() - headerSize) / triangleSize == qFromLittleEndian<quint32>(bytes.data() + headerSize - 4) &&
           (bytes.size() - headerSize) % triangleSize == 0;
}

void addBinary(std::string_view bytes, MeshParts& parts)
{
    requireAtMost(maxTriangles, (bytes.size() - headerSize) / triangleSize, "triangles");
    for (std::size_t triangle = headerSize; triangle < bytes.size(); triangle += triangleSize)
        for (std::size_t corner = 0; corner < 3; ++corner)
        {
            QVector3D position;
            for (std::size_t i = 0; i < 3; ++i)
            {
                char const* const place = bytes.data() + triangle + normalSize + 12 * corner + 4 * i;
                position[int(i)] = qFromLittleEndian<float>(place);
                if (!fitsFloat(double(position[int(i)])))
                    throw Complaint("expected finite numbers");
            }
            parts.positions.push_back(position);
        }
}

void addText(std::string_view text, MeshParts& parts)
{
    constexpr char blanks[] = " \t\r\n";
    std::string_view rest = text;
    try
    {
        for (std::string_view word = takeWord(rest, blanks); !word.empty(); word = takeWord(rest, blanks))
        {
            if (word != "vertex")
                continue;
            requireAtMost(maxVertices, parts.positions.size(), "vertices");
            QVector3D& position = parts.positions.emplace_back();
            for (int i = 0; i < 3; ++i)
            {
                std::string_view const found = takeWord(rest, blanks);
                std::optional<double> const number = toNumber<double>(found);
                if (!number || !fitsFloat(*number))
                    complain("a number", found);
                position[i] = float(*number);
            }
        }
    }
    catch (Complaint const& complaint)
    {
        throw Complaint("line " + std::to_string(lineBefore(text, rest)) + ": " + complaint.what());
    }
}

} // namespace

Mesh readStl(QByteArray const& bytes)
{
    std::string_view const text(bytes.constData(), std::size_t(bytes.size()));
    MeshParts parts;
    if (isBinary(text))
        addBinary(text, parts);
    else
        addText(text, parts);
    if (parts.positions.empty() || parts.positions.size() % 3 != 0)
        throw Complaint("expected triangles of three vertices each before the end of the file");
    for (std::size_t i = 0; i < parts.positions.size(); ++i)
        parts.corners.push_back({i, std::nullopt, {}});
    return assemble(std::move(parts));
}

} // namespace ztExamples
