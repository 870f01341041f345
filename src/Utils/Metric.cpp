#include <SeluUtils/Metric.h>

#include <SeluBase/Neighborhood.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <array>
#include <limits>
#include <new>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Metric";
constexpr char c_distance[] = "ORVA::CMetric::SquaredEuclideanDistance";
constexpr char c_table[] = "ORVA::CMetric::CalculateNeighbourTable";
constexpr char c_edge[] =
    "Only edge treatments usable are NoEdgeTreatment, Periodic and PlusSampling!";

using Table = std::vector<std::vector<int64>>;

struct StOffset {
  int64 x, y, z;
};

constexpr std::array<StOffset, 8> c_planeOffsets = [] {
  std::array<StOffset, 8> offsets{};
  for (std::size_t k = 0; k < offsets.size(); ++k)
    offsets[k] = {CNeighborhood2dDiffN8::dx[k], CNeighborhood2dDiffN8::dy[k], 0};
  return offsets;
}();

constexpr std::array<StOffset, 26> c_spaceOffsets = [] {
  std::array<StOffset, 26> offsets{};
  for (std::size_t k = 0; k < offsets.size(); ++k)
    offsets[k] = {CNeighborhood3dDiffN26::dx[k], CNeighborhood3dDiffN26::dy[k],
                  CNeighborhood3dDiffN26::dz[k]};
  return offsets;
}();

// n^dimension, or -1 where that many entries of so many bytes cannot be addressed.
int64 NumberOfCells(int64 n, unsigned char dimension, std::size_t bytesPerCell) {
  auto const limit = std::numeric_limits<int64>::max() / static_cast<int64>(bytesPerCell);
  int64 cells = 1;
  for (int axis = 0; axis < dimension; ++axis) {
    if (n != 0 && cells > limit / n) return -1;
    cells *= n;
  }
  return cells;
}

// Whether memory can be had for the whole table: one block of that size, never touched. Otherwise a
// system that promises more than it has would only find out when the table is half filled.
bool CanAllocate(std::size_t bytes) {
  void* const block = ::operator new(bytes, std::nothrow);
  ::operator delete(block);
  return block != nullptr;
}

// Fills the entries of a grid with `nz` planes (1 in the plane, n in space).
template <std::size_t N>
class CTableFiller {
public:
  CTableFiller(Table& table, std::array<StOffset, N> const& offsets, int64 n, int64 nz, bool wrap)
      : m_Table(table), m_Offsets(offsets), m_N(n), m_Nz(nz), m_Wrap(wrap) {
    for (std::size_t k = 0; k < N; ++k)
      m_Linear[k] = offsets[k].x + n * (offsets[k].y + n * offsets[k].z);
  }

  void Fill() {
    for (int64 z = 0; z < m_Nz; ++z)
      for (int64 y = 0; y < m_N; ++y) FillRow(y, z, IsInner(y) && (N == 8 || IsInner(z)));
  }

private:
  [[nodiscard]] bool IsInner(int64 coordinate) const {
    return coordinate > 0 && coordinate < m_N - 1;
  }

  void FillRow(int64 y, int64 z, bool isInner) {
    int64 const row = m_N * (y + m_N * z);
    int64 const innerEnd = isInner && m_N > 2 ? m_N - 1 : 1;
    FillBorderCell(row, 0, y, z);
    for (int64 x = 1; x < innerEnd; ++x) FillInnerCell(row + x);
    for (int64 x = innerEnd; x < m_N; ++x) FillBorderCell(row + x, x, y, z);
  }

  int64* Entry(int64 cell) {
    auto& entry = m_Table[static_cast<std::size_t>(cell)];
    entry.resize(N + 1);
    entry[N] = cell;
    return entry.data();
  }

  void FillInnerCell(int64 cell) {
    int64* const entry = Entry(cell);
    for (std::size_t k = 0; k < N; ++k) entry[k] = cell + m_Linear[k];
  }

  void FillBorderCell(int64 cell, int64 x, int64 y, int64 z) {
    int64* const entry = Entry(cell);
    for (std::size_t k = 0; k < N; ++k)
      entry[k] = Neighbor(x + m_Offsets[k].x, y + m_Offsets[k].y, z + m_Offsets[k].z);
  }

  [[nodiscard]] int64 Neighbor(int64 x, int64 y, int64 z) const {
    if (m_Wrap) return Wrapped(x, m_N) + m_N * (Wrapped(y, m_N) + m_N * Wrapped(z, m_Nz));
    bool const inside = x >= 0 && x < m_N && y >= 0 && y < m_N && z >= 0 && z < m_Nz;
    return inside ? x + m_N * (y + m_N * z) : -1;
  }

  static int64 Wrapped(int64 coordinate, int64 extent) {
    return coordinate < 0 ? extent - 1 : coordinate == extent ? 0 : coordinate;
  }

  Table& m_Table;
  std::array<StOffset, N> const& m_Offsets;
  std::array<int64, N> m_Linear{};
  int64 m_N, m_Nz;
  bool m_Wrap;
};

Table MakeTable(std::size_t cells, unsigned char dimension, int64 n, bool wrap) {
  Table table(cells);
  if (dimension == 2)
    CTableFiller(table, c_planeOffsets, n, 1, wrap).Fill();
  else
    CTableFiller(table, c_spaceOffsets, n, n, wrap).Fill();
  return table;
}

} // namespace

void CMetric::CalculateNeighbourTable(std::vector<std::vector<int64>>* table,
                                      unsigned char dimension, int64 n,
                                      EEdgeTreatment::EnEdgeTreatmentId const& edge) {
  if (table == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_table), "neighbour table is null");
  if (n < 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_table),
                        CString("side %1 of the grid is negative").Arg(n));
  bool const isPlaneOrSpace = dimension == 2 || dimension == 3;
  // An entry's values, and the bookkeeping of their block.
  std::size_t const values = dimension == 2 ? 9 : 27;
  std::size_t const bytes =
      sizeof(Table::value_type) + (isPlaneOrSpace ? (values + 1) * sizeof(int64) : 0);
  int64 const cells = NumberOfCells(n, dimension, bytes);
  if (cells < 0 || !CanAllocate(static_cast<std::size_t>(cells) * bytes)) {
    CString message("no memory for the neighbour table of a grid of side %1 and dimension %2");
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_table),
                        message.Arg(n).Arg(static_cast<int64>(dimension)));
  }

  auto const size = static_cast<std::size_t>(cells);
  bool const wrap = edge == EEdgeTreatment::Periodic;
  if (!isPlaneOrSpace) {
    table->resize(size);
    Impl::Raise(ORVA_LOCATION(c_module, c_table),
                " CMetric::CalculateNeighbourTable Only implemented for dimension 2 and 3");
  }
  if (!wrap && edge != EEdgeTreatment::NoEdgeTreatment && edge != EEdgeTreatment::PlusSampling) {
    table->resize(size);
    Impl::Raise(ORVA_LOCATION(c_module, c_table), c_edge);
  }
  *table = MakeTable(size, dimension, n, wrap);
}

void CMetric::RaiseDifferentSize() {
  Impl::Raise(ORVA_LOCATION(c_module, c_distance), "EuclideanDistance Points of different size!");
}

void CMetric::RaiseEdgeTreatment() { Impl::Raise(ORVA_LOCATION(c_module, c_distance), c_edge); }

void CMetric::RaisePeriodicDimension() {
  Impl::Raise(ORVA_LOCATION(c_module, c_distance),
              "EuclideanDistance Periodic boundary only implemented for dimension 2 and 3!");
}

void CMetric::RaiseWindowSize() {
  Impl::Raise(ORVA_LOCATION(c_module, c_distance),
              "EuclideanDistance Window size of wrong dimension!");
}

} // namespace ORVA
