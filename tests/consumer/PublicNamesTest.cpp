// Every public include and name of version 0.1.0 is still there: what compiled then compiles now.

#include <SeluBase/Algorithm.h>
#include <SeluBase/EdgeTreatment.h>
#include <SeluBase/Neighborhood.h>
#include <SeluUtils/AreaVisitor.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/BresenhamVisitorImpl.h>
#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/CutSlice.h>
#include <SeluUtils/CylinderMask.h>
#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/LineVisitor.h>
#include <SeluUtils/Matrix.h>
#include <SeluUtils/MatrixInterface.h>
#include <SeluUtils/Metric.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/Random/ConstantValue.h>
#include <SeluUtils/Random/FixRotation.h>
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/PressedDirections.h>
#include <SeluUtils/Random/RandomChordlength.h>
#include <SeluUtils/Random/RandomCircleDiameter.h>
#include <SeluUtils/Random/RandomDiscrete.h>
#include <SeluUtils/Random/RandomExponential.h>
#include <SeluUtils/Random/RandomGamma.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Random/RandomLogNormal.h>
#include <SeluUtils/Random/RandomNormal.h>
#include <SeluUtils/Random/RandomPoisson.h>
#include <SeluUtils/Random/RandomRayleigh.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Random/RotationGenerator.h>
#include <SeluUtils/Random/UniformPoint.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>
#include <SeluUtils/Triple.h>
#include <SeluUtils/ValueHelper.h>
#include <SeluUtils/VolumeVisitor.h>
#include <SeluUtils/Walker.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/Object.h>
#include <pxlib2core/Random.h>
#include <pxlib2core/String.h>
#include <pxlib2core/Types.h>
#include <pxlib2core/Value.h>
#include <pxlib2core/ValueKey.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>
#include <pxlib2image/HeaderTools.h>
#include <pxlib2image/Image.h>
#include <pxlib2image/Size.h>

#include <gtest/gtest.h>

#include <concepts>
#include <cstddef>

namespace {

// At the top of the namespace.
using ORVA::CAlgorithm, ORVA::CBresenhamAreaVisitor, ORVA::CBresenhamVisitor,
    ORVA::CBresenhamVisitorSelect, ORVA::CBresenhamVolumeVisitor, ORVA::CConstantValue,
    ORVA::CCooccurrence, ORVA::CCutSlice, ORVA::CCylinderMask, ORVA::CDeltaVisitor,
    ORVA::CDirectionalVisitor, ORVA::CEulerRotation, ORVA::CExBadParam, ORVA::CException,
    ORVA::CFixRotation, ORVA::CGirdleRotation, ORVA::CImage, ORVA::CImageAccess,
    ORVA::CIsotropicRotation, ORVA::CMatrix, ORVA::CMetric, ORVA::CMixtureRotation,
    ORVA::CNeighborhood2dDiffN8, ORVA::CNeighborhood3dDiffN26, ORVA::COwningPointRange,
    ORVA::CParallelLineVisitor, ORVA::CPlaneSection, ORVA::CPointRange, ORVA::CPolarCoordinates,
    ORVA::CPolygonVisitor, ORVA::CPos, ORVA::CPressedDirections, ORVA::CRandom,
    ORVA::CRandomChordlength, ORVA::CRandomCircleDiameter, ORVA::CRandomDiscrete,
    ORVA::CRandomExponential, ORVA::CRandomGamma, ORVA::CRandomLogNormal, ORVA::CRandomNormal,
    ORVA::CRandomPoisson, ORVA::CRandomRayleigh, ORVA::CRandomUniform, ORVA::CSeluHeaderTools,
    ORVA::CSize, ORVA::CStatistics, ORVA::CStatisticsTemplate, ORVA::CString, ORVA::CStringTools,
    ORVA::CTriple, ORVA::CUniformPoint, ORVA::CValue, ORVA::CValueBool, ORVA::CValueDouble,
    ORVA::CValueLong, ORVA::CValueMap, ORVA::CValueMapWithOperators, ORVA::CValuePointer,
    ORVA::CValueString, ORVA::CValueVector, ORVA::CValue_Key, ORVA::CVonMisesFisher,
    ORVA::CWatsonRotation, ORVA::CWindowVisitor, ORVA::ConvertObjectBasedFeaturesIntoFeatureImage,
    ORVA::CopyMapEntries, ORVA::CreateKeyListRecursivly, ORVA::EEdgeTreatment, ORVA::EnEncoding,
    ORVA::EnFixedKey, ORVA::ExtractKeys, ORVA::IImage, ORVA::IMAGE_BINARY_FG, ORVA::IMAGE_BOOL,
    ORVA::IMAGE_GREY_16, ORVA::IMAGE_GREY_32, ORVA::IMAGE_GREY_8, ORVA::IMAGE_GREY_F, ORVA::IMatrix,
    ORVA::IObject, ORVA::IPluginObject, ORVA::IProgressObserver, ORVA::IRandomGenerator,
    ORVA::IRotationGenerator, ORVA::Impl::CBresenhamAreaVisitor2D,
    ORVA::Impl::CBresenhamAreaVisitor3D, ORVA::Impl::CBresenhamVisitor1D,
    ORVA::Impl::CBresenhamVisitor2D, ORVA::Impl::CBresenhamVisitor3D, ORVA::Impl::CVisitPoint,
    ORVA::IsGrayvalueBasedFeaturesMap, ORVA::IsObjectBasedFeaturesMap, ORVA::NEIGHBORHOOD_14_1,
    ORVA::NEIGHBORHOOD_14_2, ORVA::NEIGHBORHOOD_26, ORVA::NEIGHBORHOOD_4, ORVA::NEIGHBORHOOD_6,
    ORVA::NEIGHBORHOOD_6_1, ORVA::NEIGHBORHOOD_6_2, ORVA::NEIGHBORHOOD_8, ORVA::Points, ORVA::int64,
    ORVA::uint64;

using namespace ORVA;

// Members that a user calls or that a derived class of his sees. A name that is gone is an error.
struct StMembers0 : ORVA::CAlgorithm {
  using CAlgorithm::CProgress, CAlgorithm::GetPluginSetup, CAlgorithm::Init, CAlgorithm::Instance,
      CAlgorithm::Name, CAlgorithm::Parent, CAlgorithm::SetInstance,
      CAlgorithm::SetProgressObserver;
};
struct StMembers1 : ORVA::CBresenhamAreaVisitor {
  using CBresenhamAreaVisitor::Convert, CBresenhamAreaVisitor::ConvertNeighborhood,
      CBresenhamAreaVisitor::MakePathFitting, CBresenhamAreaVisitor::MorePoints,
      CBresenhamAreaVisitor::NextPoint, CBresenhamAreaVisitor::PrintBorder,
      CBresenhamAreaVisitor::Reset, CBresenhamAreaVisitor::SetImageSize,
      CBresenhamAreaVisitor::Steps, CBresenhamAreaVisitor::empty;
};
struct StMembers2 : ORVA::CBresenhamVisitor {
  using CBresenhamVisitor::Dim, CBresenhamVisitor::FirstStep, CBresenhamVisitor::LastStep,
      CBresenhamVisitor::MorePoints, CBresenhamVisitor::Neighborhood, CBresenhamVisitor::NextPoint,
      CBresenhamVisitor::PrintMoves, CBresenhamVisitor::PrintProjMoves, CBresenhamVisitor::Reset,
      CBresenhamVisitor::SetImageSize, CBresenhamVisitor::Step, CBresenhamVisitor::Steps,
      CBresenhamVisitor::TestNextPoint, CBresenhamVisitor::empty;
};
struct StMembers3 : ORVA::CBresenhamVisitorSelect {
  using CBresenhamVisitorSelect::FirstStep, CBresenhamVisitorSelect::LastStep,
      CBresenhamVisitorSelect::MorePoints, CBresenhamVisitorSelect::NextPoint,
      CBresenhamVisitorSelect::Reset, CBresenhamVisitorSelect::SetImageSize,
      CBresenhamVisitorSelect::Step, CBresenhamVisitorSelect::Steps,
      CBresenhamVisitorSelect::TestNextPoint, CBresenhamVisitorSelect::empty;
};
struct StMembers4 : ORVA::CBresenhamVolumeVisitor {
  using CBresenhamVolumeVisitor::ComputeBorder, CBresenhamVolumeVisitor::ComputeBorderFromPairs,
      CBresenhamVolumeVisitor::ConvertListToPath, CBresenhamVolumeVisitor::CountSteps,
      CBresenhamVolumeVisitor::EraseUselessBorderPoints, CBresenhamVolumeVisitor::MorePoints,
      CBresenhamVolumeVisitor::NextPoint, CBresenhamVolumeVisitor::PrintBorder,
      CBresenhamVolumeVisitor::Reset, CBresenhamVolumeVisitor::SetImageSize,
      CBresenhamVolumeVisitor::Steps, CBresenhamVolumeVisitor::empty;
};
struct StMembers5 : ORVA::CConstantValue<CEulerRotation> {
  using CConstantValue<CEulerRotation>::IsValid;
};
struct StMembers6 : ORVA::CCooccurrence {
  using CCooccurrence::ComputeFeatures, CCooccurrence::ComputeMatrix,
      CCooccurrence::ComputeMatrixAllDirections, CCooccurrence::ComputeMatrixAndFeatures,
      CCooccurrence::NumberOfDirections, CCooccurrence::m_cDirections,
      CCooccurrence::m_cFeatureNames, CCooccurrence::m_cGreyLevels;
};
struct StMembers7 : ORVA::CCutSlice {
  using CCutSlice::ComputeMoves, CCutSlice::Distance, CCutSlice::GetInitialization,
      CCutSlice::MorePoints, CCutSlice::NextPoint, CCutSlice::Normal, CCutSlice::Reset,
      CCutSlice::SetImageSize, CCutSlice::Steps, CCutSlice::empty, CCutSlice::lineValid;
};
struct StMembers8 : ORVA::CCylinderMask {
  using CCylinderMask::CopyMetaInfo, CCylinderMask::MaskImageWithMetaInfoCylinder,
      CCylinderMask::SetCylinderParameters, CCylinderMask::SetCylinderSlice;
};
struct StMembers9 : ORVA::CDeltaVisitor {
  using CDeltaVisitor::BorderPoint, CDeltaVisitor::MorePoints, CDeltaVisitor::NextPoint,
      CDeltaVisitor::SetDirection, CDeltaVisitor::SetImageSize, CDeltaVisitor::Steps,
      CDeltaVisitor::empty;
};
struct StMembers10 : ORVA::CDirectionalVisitor {
  using CDirectionalVisitor::MorePoints, CDirectionalVisitor::NextPoint,
      CDirectionalVisitor::SetDirection, CDirectionalVisitor::SetImageSize,
      CDirectionalVisitor::Steps, CDirectionalVisitor::empty;
};
struct StMembers11 : ORVA::CEulerRotation {
  using CEulerRotation::IsValid, CEulerRotation::ToString, CEulerRotation::backRotateVector,
      CEulerRotation::getDirectionVector, CEulerRotation::getEulerAngles,
      CEulerRotation::getInverseRotationMatrix, CEulerRotation::getRotationMatrix,
      CEulerRotation::rotateVector;
};
struct StMembers12 : ORVA::CException {
  using CException::Location, CException::what;
};
struct StMembers13 : ORVA::CFixRotation {
  using CFixRotation::Clone, CFixRotation::IsValid;
};
struct StMembers14 : ORVA::CGirdleRotation {
  using CGirdleRotation::Clone, CGirdleRotation::IsValid, CGirdleRotation::zaxis;
};
struct StMembers15 : ORVA::CImageAccess {
  using CImageAccess::Base, CImageAccess::Extent, CImageAccess::Extents, CImageAccess::Release,
      CImageAccess::Stride, CImageAccess::Strides, CImageAccess::WritableBase;
};
struct StMembers16 : ORVA::CIsotropicRotation {
  using CIsotropicRotation::Clone, CIsotropicRotation::IsValid;
};
struct StMembers17 : ORVA::CMatrix<double> {
  using CMatrix<double>::Cols, CMatrix<double>::Elements, CMatrix<double>::Resize,
      CMatrix<double>::Rows;
};
struct StMembers18 : ORVA::CMetric {
  using CMetric::CalculateNeighbourTable, CMetric::EuclideanDistance,
      CMetric::SquaredEuclideanDistance;
};
struct StMembers19 : ORVA::CMixtureRotation {
  using CMixtureRotation::Add, CMixtureRotation::Clone, CMixtureRotation::IsValid;
};
struct StMembers20 : ORVA::CNeighborhood2dDiffN8 {
  using CNeighborhood2dDiffN8::dx, CNeighborhood2dDiffN8::dy;
};
struct StMembers21 : ORVA::CNeighborhood3dDiffN26 {
  using CNeighborhood3dDiffN26::dx, CNeighborhood3dDiffN26::dy, CNeighborhood3dDiffN26::dz;
};
struct StMembers22 : ORVA::COwningPointRange<CWindowVisitor> {
  using COwningPointRange<CWindowVisitor>::begin, COwningPointRange<CWindowVisitor>::end;
};
struct StMembers23 : ORVA::CParallelLineVisitor {
  using CParallelLineVisitor::BorderPoint, CParallelLineVisitor::MorePoints,
      CParallelLineVisitor::NextPoint, CParallelLineVisitor::SetDirection,
      CParallelLineVisitor::SetImageSize, CParallelLineVisitor::Steps, CParallelLineVisitor::empty;
};
struct StMembers24 : ORVA::CPlaneSection {
  using CPlaneSection::DominantAxis, CPlaneSection::MorePoints, CPlaneSection::NextPoint,
      CPlaneSection::Reset, CPlaneSection::SetImageSize, CPlaneSection::Steps, CPlaneSection::empty;
};
struct StMembers25 : ORVA::CPointRange<CWindowVisitor> {
  using CPointRange<CWindowVisitor>::CIterator, CPointRange<CWindowVisitor>::begin,
      CPointRange<CWindowVisitor>::end;
};
struct StMembers26 : ORVA::CPolarCoordinates {
  using CPolarCoordinates::ConvertToCartesianRepresentation, CPolarCoordinates::m_fPhi,
      CPolarCoordinates::m_fTheta;
};
struct StMembers27 : ORVA::CPolygonVisitor {
  using CPolygonVisitor::MorePoints, CPolygonVisitor::NextPoint, CPolygonVisitor::Reset,
      CPolygonVisitor::SetImageSize, CPolygonVisitor::Steps, CPolygonVisitor::empty;
};
struct StMembers28 : ORVA::CPos {
  using CPos::x, CPos::y, CPos::z;
};
struct StMembers29 : ORVA::CPressedDirections {
  using CPressedDirections::PressingFactor, CPressedDirections::SecondFactor;
};
struct StMembers30 : ORVA::CRandom {
  using CRandom::Obj, CRandom::Rand, CRandom::Rand15, CRandom::Rand32, CRandom::Rand64,
      CRandom::Rand8, CRandom::Seed, CRandom::c_rand15Max;
};
struct StMembers31 : ORVA::CRandomChordlength {
  using CRandomChordlength::IsValid;
};
struct StMembers32 : ORVA::CRandomCircleDiameter {
  using CRandomCircleDiameter::IsValid;
};
struct StMembers33 : ORVA::CRandomDiscrete {
  using CRandomDiscrete::IsValid;
};
struct StMembers34 : ORVA::CRandomExponential {
  using CRandomExponential::IsValid;
};
struct StMembers35 : ORVA::CRandomGamma {
  using CRandomGamma::IsValid;
};
struct StMembers36 : ORVA::CRandomLogNormal {
  using CRandomLogNormal::IsValid, CRandomLogNormal::SetLogNormalExpectationAndStDeviation;
};
struct StMembers37 : ORVA::CRandomNormal {
  using CRandomNormal::IsValid;
};
struct StMembers38 : ORVA::CRandomPoisson {
  using CRandomPoisson::IsValid;
};
struct StMembers39 : ORVA::CRandomRayleigh {
  using CRandomRayleigh::IsValid;
};
struct StMembers40 : ORVA::CRandomUniform {
  using CRandomUniform::IsValid;
};
struct StMembers41 : ORVA::CSeluHeaderTools {
  using CSeluHeaderTools::GetMetaInfo, CSeluHeaderTools::SetMetaInfo,
      CSeluHeaderTools::c_sMetaMinMax;
};
struct StMembers42 : ORVA::CSize {
  using CSize::Dim, CSize::IsEmpty, CSize::SetDim, CSize::x, CSize::y, CSize::z;
};
struct StMembers43 : ORVA::CStatisticsTemplate<double> {
  using CStatisticsTemplate<double>::first, CStatisticsTemplate<double>::second;
};
struct StMembers44 : ORVA::CString {
  using CString::Arg, CString::Find, CString::IsEmpty, CString::NPOS, CString::Size, CString::Std,
      CString::c_str;
};
struct StMembers45 : ORVA::CStringTools {
  using CStringTools::Printf;
};
struct StMembers46 : ORVA::CTriple<int64> {
  using CTriple<int64>::x, CTriple<int64>::y, CTriple<int64>::z;
};
struct StMembers47 : ORVA::CUniformPoint {
  using CUniformPoint::IsValid, CUniformPoint::volume;
};
struct StMembers48 : ORVA::CValue {
  using CValue::Bool, CValue::Clone, CValue::Copy, CValue::Double, CValue::EnGenericType,
      CValue::EnType, CValue::Equal, CValue::GenericType, CValue::IsValid, CValue::Long,
      CValue::Map, CValue::Meta, CValue::Move, CValue::Pointer, CValue::String, CValue::Type,
      CValue::TypeName, CValue::Vector;
};
struct StMembers49 : ORVA::CValueMap {
  using CValueMap::Clear, CValueMap::Detach, CValueMap::Entries, CValueMap::Entry, CValueMap::Find,
      CValueMap::HasEntry, CValueMap::IsEmpty, CValueMap::IsSubset, CValueMap::Keys,
      CValueMap::RemoveEntry, CValueMap::SetEntry, CValueMap::Size, CValueMap::begin,
      CValueMap::const_iterator, CValueMap::end;
};
struct StMembers50 : ORVA::CValueMap::const_iterator {
  using CValueMap::const_iterator::Key, CValueMap::const_iterator::Value;
};
struct StMembers51 : ORVA::CValueMapWithOperators {
  using CValueMapWithOperators::m_Excluded, CValueMapWithOperators::m_Keys;
};
struct StMembers52 : ORVA::CValuePointer {
  using CValuePointer::Own, CValuePointer::Refer;
};
struct StMembers53 : ORVA::CValueVector {
  using CValueVector::Detach, CValueVector::Entry, CValueVector::Find, CValueVector::IsEmpty,
      CValueVector::PushBack, CValueVector::SetEntry, CValueVector::Size, CValueVector::begin,
      CValueVector::end;
};
struct StMembers54 : ORVA::CValue_Key {
  using CValue_Key::IsText, CValue_Key::Number, CValue_Key::Text, CValue_Key::ToString;
};
struct StMembers55 : ORVA::CVonMisesFisher {
  using CVonMisesFisher::Clone, CVonMisesFisher::GeneratePhi, CVonMisesFisher::GenerateTheta,
      CVonMisesFisher::IsValid, CVonMisesFisher::zaxis;
};
struct StMembers56 : ORVA::CWatsonRotation {
  using CWatsonRotation::Clone, CWatsonRotation::IsValid, CWatsonRotation::xaxis;
};
struct StMembers57 : ORVA::CWindowVisitor {
  using CWindowVisitor::High, CWindowVisitor::Low, CWindowVisitor::MorePoints,
      CWindowVisitor::NextPoint, CWindowVisitor::SetImageSize, CWindowVisitor::Steps,
      CWindowVisitor::empty;
};
struct StMembers58 : ORVA::EEdgeTreatment {
  using EEdgeTreatment::EnEdgeTreatmentId;
};
struct StMembers59 : ORVA::IImage {
  using IImage::Attributes, IImage::CType, IImage::CreateAccess, IImage::Size, IImage::Type;
};
struct StMembers60 : ORVA::IImage::CType {
  using IImage::CType::Bytes, IImage::CType::EnId, IImage::CType::Id, IImage::CType::ToString;
};
struct StMembers61 : ORVA::IMatrix<double> {
  using IMatrix<double>::AddCols, IMatrix<double>::AddRows, IMatrix<double>::Cols,
      IMatrix<double>::Resize, IMatrix<double>::Rows, IMatrix<double>::Transpose;
};
struct StMembers62 : ORVA::IObject {
  using IObject::SetInstance;
};
struct StMembers63 : ORVA::IPluginObject {
  using IPluginObject::GetPluginSetup, IPluginObject::Init;
};
struct StMembers64 : ORVA::IProgressObserver {
  using IProgressObserver::Advance, IProgressObserver::Finish, IProgressObserver::IsCancelled,
      IProgressObserver::Start;
};
struct StMembers65 : ORVA::IRandomGenerator<double> {
  using IRandomGenerator<double>::IsValid;
};
struct StMembers66 : ORVA::IRotationGenerator {
  using IRotationGenerator::Clone, IRotationGenerator::IsValid;
};
struct StMembers67 : ORVA::Impl::CBresenhamAreaVisitor2D {
  using Impl::CBresenhamAreaVisitor2D::CountSteps, Impl::CBresenhamAreaVisitor2D::EraseBorderPoints,
      Impl::CBresenhamAreaVisitor2D::EraseUselessBorders,
      Impl::CBresenhamAreaVisitor2D::GetCurrentEndPoint,
      Impl::CBresenhamAreaVisitor2D::GetCurrentStartPoint,
      Impl::CBresenhamAreaVisitor2D::MorePoints, Impl::CBresenhamAreaVisitor2D::NextPoint,
      Impl::CBresenhamAreaVisitor2D::PrintBorder, Impl::CBresenhamAreaVisitor2D::Reset,
      Impl::CBresenhamAreaVisitor2D::SignBorder, Impl::CBresenhamAreaVisitor2D::SignEndPoints,
      Impl::CBresenhamAreaVisitor2D::SignStartPoints, Impl::CBresenhamAreaVisitor2D::Steps;
};
struct StMembers68 : ORVA::Impl::CBresenhamAreaVisitor3D {
  using Impl::CBresenhamAreaVisitor3D::CountSteps, Impl::CBresenhamAreaVisitor3D::EraseBorderPoints,
      Impl::CBresenhamAreaVisitor3D::EraseUselessBorders,
      Impl::CBresenhamAreaVisitor3D::GetCurrentEndPoint,
      Impl::CBresenhamAreaVisitor3D::GetCurrentStartPoint,
      Impl::CBresenhamAreaVisitor3D::IsPairedByColumn, Impl::CBresenhamAreaVisitor3D::MorePoints,
      Impl::CBresenhamAreaVisitor3D::NextPoint, Impl::CBresenhamAreaVisitor3D::PrintBorder,
      Impl::CBresenhamAreaVisitor3D::PrintStatus, Impl::CBresenhamAreaVisitor3D::Reset,
      Impl::CBresenhamAreaVisitor3D::SignBorder, Impl::CBresenhamAreaVisitor3D::SignEndPoints,
      Impl::CBresenhamAreaVisitor3D::SignStartPoints, Impl::CBresenhamAreaVisitor3D::Steps;
};
struct StMembers69 : ORVA::Impl::CBresenhamVisitor1D {
  using Impl::CBresenhamVisitor1D::LastStep, Impl::CBresenhamVisitor1D::Step;
};
struct StMembers70 : ORVA::Impl::CBresenhamVisitor2D {
  using Impl::CBresenhamVisitor2D::Decisions, Impl::CBresenhamVisitor2D::DiagonalIn,
      Impl::CBresenhamVisitor2D::FillNabla, Impl::CBresenhamVisitor2D::Init,
      Impl::CBresenhamVisitor2D::IsXMajor, Impl::CBresenhamVisitor2D::LastStep,
      Impl::CBresenhamVisitor2D::Neighborhood, Impl::CBresenhamVisitor2D::PrintSteps,
      Impl::CBresenhamVisitor2D::Step;
};
struct StMembers71 : ORVA::Impl::CBresenhamVisitor3D {
  using Impl::CBresenhamVisitor3D::AxisOrder, Impl::CBresenhamVisitor3D::ComputeMoves,
      Impl::CBresenhamVisitor3D::ConvertFrom, Impl::CBresenhamVisitor3D::DiagonalMask,
      Impl::CBresenhamVisitor3D::Init, Impl::CBresenhamVisitor3D::LastStep,
      Impl::CBresenhamVisitor3D::Moves, Impl::CBresenhamVisitor3D::Neighborhood,
      Impl::CBresenhamVisitor3D::PrintMoves, Impl::CBresenhamVisitor3D::PrintProjMoves,
      Impl::CBresenhamVisitor3D::Step;
};
struct StMembers72 : ORVA::Impl::CVisitPoint {
  using Impl::CVisitPoint::MorePoints, Impl::CVisitPoint::NextPoint, Impl::CVisitPoint::Reset,
      Impl::CVisitPoint::SetImageSize, Impl::CVisitPoint::Steps, Impl::CVisitPoint::empty;
};

// CImage is final: its members by their addresses or in an expression.
template <class T>
concept ImageLike = requires(T image, T const& fixed) {
  image.Resize(CSize(2, 2), CSize(0, 0, 0));
  { fixed.Size() } -> std::same_as<CSize>;
  { fixed.Type() } -> std::same_as<IImage::CType>;
  { image.Attributes() } -> std::same_as<CValueMap&>;
  { fixed.Attributes() } -> std::same_as<CValueMap const&>;
  { fixed.Bytes() } -> std::same_as<std::size_t>;
  { image.CreateAccess(true) } -> std::same_as<CImageAccess>;
  { fixed.CreateAccess(false) } -> std::same_as<CImageAccess>;
  { image.CreateAccess(true, CPos(), CPos()) } -> std::same_as<CImageAccess>;
  { fixed.CreateAccess(false, CPos(), CPos()) } -> std::same_as<CImageAccess>;
  { fixed == fixed } -> std::same_as<bool>;
};
static_assert(ImageLike<CImage>);

} // namespace

TEST(PublicNames, AreAllThere) {
  // Enumerators and the macro; the rest is settled by compiling this file.
  std::size_t count = 0;
  static_cast<void>(ORVA::CValue::EnGenericType::Container), ++count;
  static_cast<void>(ORVA::CValue::EnGenericType::None), ++count;
  static_cast<void>(ORVA::CValue::EnGenericType::Number), ++count;
  static_cast<void>(ORVA::CValue::EnGenericType::Object), ++count;
  static_cast<void>(ORVA::CValue::EnGenericType::Text), ++count;
  static_cast<void>(ORVA::CValue::EnType::Bool), ++count;
  static_cast<void>(ORVA::CValue::EnType::Double), ++count;
  static_cast<void>(ORVA::CValue::EnType::Invalid), ++count;
  static_cast<void>(ORVA::CValue::EnType::Long), ++count;
  static_cast<void>(ORVA::CValue::EnType::Map), ++count;
  static_cast<void>(ORVA::CValue::EnType::Pointer), ++count;
  static_cast<void>(ORVA::CValue::EnType::String), ++count;
  static_cast<void>(ORVA::CValue::EnType::Vector), ++count;
  static_cast<void>(ORVA::EEdgeTreatment::EnEdgeTreatmentId::MinusSampling), ++count;
  static_cast<void>(ORVA::EEdgeTreatment::EnEdgeTreatmentId::Mirroring), ++count;
  static_cast<void>(ORVA::EEdgeTreatment::EnEdgeTreatmentId::NoEdgeTreatment), ++count;
  static_cast<void>(ORVA::EEdgeTreatment::EnEdgeTreatmentId::Periodic), ++count;
  static_cast<void>(ORVA::EEdgeTreatment::EnEdgeTreatmentId::PlusSampling), ++count;
  static_cast<void>(ORVA::EnEncoding::Latin1), ++count;
  static_cast<void>(ORVA::EnEncoding::Utf8), ++count;
  static_cast<void>(ORVA::EnFixedKey::MaximumLabel), ++count;
  static_cast<void>(ORVA::EnFixedKey::NumberOfGrayvalues), ++count;
  static_cast<void>(ORVA::EnFixedKey::NumberOfObjects), ++count;
  static_cast<void>(ORVA::EnFixedKey::Object), ++count;
  static_cast<void>(ORVA::EnFixedKey::Status), ++count;
  static_cast<void>(ORVA::IImage::CType::EnId::BinaryFg), ++count;
  static_cast<void>(ORVA::IImage::CType::EnId::Bool), ++count;
  static_cast<void>(ORVA::IImage::CType::EnId::Grey16), ++count;
  static_cast<void>(ORVA::IImage::CType::EnId::Grey32), ++count;
  static_cast<void>(ORVA::IImage::CType::EnId::Grey8), ++count;
  static_cast<void>(ORVA::IImage::CType::EnId::GreyF), ++count;
  static_cast<void>(ORVA::IImage::CType::EnId::None), ++count;
  EXPECT_EQ(count, 32u);
  EXPECT_STREQ(ORVA_LOCATION("module", "function").source, "module");
}
