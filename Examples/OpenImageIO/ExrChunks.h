/// \file
/// The chunks of an EXR file of scan lines: those that stay as they are can be copied compressed.
/// See https://openexr.com/en/latest/OpenEXRFileLayout.html
#pragma once

#include <QByteArray>
#include <QRect>

#include <map>
#include <optional>
#include <vector>

namespace ztExamples
{

/// A file in memory.
class ExrChunks
{
  public:
    /// Of a part, by their indices from the top; as they stand in a file of this part alone.
    using Chunks = std::map<int, QByteArray>;

    /// \param windows  the parts' data windows
    /// \return nothing if it is no such file, or not a whole one
    static std::optional<ExrChunks> find(QByteArray const& file, std::vector<QRect> const& windows);

    /// The number of a part's method of compression.
    int method(std::size_t part) const { return _methods[part]; }

    /// How many rows of a part are in a chunk, the last one apart.
    int rowCount(std::size_t part) const;

    /// All chunks of a part.
    Chunks chunksOf(std::size_t part) const;

    /// The file with other chunks in the place of some of a part.
    QByteArray with(std::size_t part, Chunks const& others) const;

  private:
    struct Chunk
    {
        std::size_t part;
        int index;
        /// Where in the file it is told where the chunk begins.
        int entry;
        int begin, end;
    };

    bool findParts();
    bool findChunks(std::vector<QRect> const& windows);
    bool isRight(Chunk const& chunk, QRect const& window) const;

    QByteArray _file;
    std::vector<int> _methods;
    /// Where the entries of all chunks stand.
    int _table = 0;
    /// How many bytes of a chunk say which part it is of.
    int _prefixSize = 0;
    /// In the order of the file.
    std::vector<Chunk> _chunks;
};

} // namespace ztExamples
