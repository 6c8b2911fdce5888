// SPDX-License-Identifier: MIT
/// The version numbers of project files at which a form changed: major * 100000 + minor * 1000 +
/// build. They are part of the file format. Each name states what is true from its version on.
#pragma once

namespace datainterface::fileVersions {

// The stream version of the whole file, by the release of Qt that introduced it. Files from
// kStreamsAsQt46Early on were written in Qt 4.6's form; those after kStreamsAsQt46EarlyEnd follow
// the table again.
constexpr int kStreamsAsQt40 = 112001; ///< before, Qt 3.3
constexpr int kStreamsAsQt42 = 130000;
constexpr int kStreamsAsQt44 = 180022;
constexpr int kStreamsAsQt45 = 180063;
constexpr int kStreamsAsQt46 = 180088;
constexpr int kStreamsAsQt51 = 201038;
constexpr int kStreamsAsQt54 = 400019;
constexpr int kStreamsAsQt46Early = 170100;
constexpr int kStreamsAsQt46EarlyEnd = 180000; ///< the first file that is not of them

// The top level of the file.
constexpr int kNamesGeographyKinds = 103000; ///< and has one reserved number fewer
constexpr int kNamesApplication = 107000;
constexpr int kHasVariogramModels = 150000;
constexpr int kHasBlocks = 180005;
constexpr int kPacksBlocks = 180050;
constexpr int kHasNoStraySeries = 201044; ///< series of objects that a resize had removed

// Geographies.
constexpr int kVectorStartsWithBase = 102001; ///< before, ids and weight sets follow the geometry
constexpr int kGeographyHasDetails = 103000;  ///< time format, parent, weight sets
constexpr int kTimeFormatIsNumber = 107000;   ///< before, two flags
constexpr int kGeographyHasName = 130000;     ///< before, only the geometry has one
constexpr int kGeographyHasTags = 170004;
constexpr int kGeographyHasStatic = 170006;
constexpr int kRasterHasOneStamp = 105000;
constexpr int kRasterHasProjection = 111001;
constexpr int kRasterHasOwnTime = 160000;
constexpr int kRasterTextsAreTags = 170004;

// Data sources.
constexpr int kVectorSourceHasSpareTable = 101000;
constexpr int kVectorSourceHasNoSpareTable = 102000;
constexpr int kSourceHasSpareTable = 102001;
constexpr int kSourceHasNoSpareTable = 120000;
constexpr int kSourceTagsDatasets = 130000; ///< before, texts are in tables of the source
constexpr int kSourceEndsWithCount = 130000;

// What all datasets share.
constexpr int kDatasetHasPath = 120000;
constexpr int kDatasetHasRealizations = 130000;
constexpr int kDatasetHasHead = 130000; ///< id, tags, time bounds
constexpr int kDatasetHasTags = 170004;
constexpr int kDatasetHasStatic = 170006;
constexpr int kDatasetNameIsTag = 170009;
constexpr int kAttributesAreTags = 180000;
constexpr int kTagsAreVariants = 180000; ///< before, texts
constexpr int kDatasetHasType = 201001;
constexpr int kNewTypeCodes = 306014;
constexpr int kFrequenciesAreArray = 180083;

// Vector datasets.
constexpr int kVectorDatasetHasBase = 103000;
constexpr int kNestsInlineMaps = 170001;
constexpr int kHasStorageType = 180004; ///< and containers as block ids

// Raster datasets and grids.
constexpr int kGridsAreBlocks = 180005;
constexpr int kGridsHaveTypeCodes = 201001;
constexpr int kHasMissingFlag = 306014;

// Single values.
constexpr int kDatumIsSingle = 103000; ///< before, three lists
constexpr int kDatumHasFlag = 109001;
constexpr int kDatumTextIsBytes = 120000;

// Weight sets.
constexpr int kSetsIncludedEgo = 103000; ///< all sets before kSetHasIncludeEgo, without a flag
constexpr int kSetHasIncludeEgo = 104000;
constexpr int kSetHasInformation = 105000; ///< and today's codes of weights
constexpr int kSetHasNumerator = 107000;   ///< in place of a byte of another use
constexpr int kHasClusterSets = 112000;
constexpr int kSetsHaveIds = 120000;
constexpr int kListFloatsAreFloats = 130000;
constexpr int kListsAreBlocks = 201042;
constexpr int kListsAreComparable = 400002; ///< older lists number objects in another way

// Variogram models.
constexpr int kModelHasParameterSet = 160002;
constexpr int kModelHasVersion = 170005;

} // namespace datainterface::fileVersions
