// SPDX-License-Identifier: MIT
/// Variogram models: how the dissimilarity of two measurements grows with their separation. The
/// application fits them; here they are kept, evaluated and summed up.
#pragma once
#include <QDataStream>
#include <QList>
#include <QMap>
#include <QString>
#include <QVector>
#include <array>
#include "datainterface/DataId.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/export.h"

class MGeoData;

/// One structure of a model. Lags and ranges are in map units, sills in the square of the dataset's
/// unit.
struct DATAINTERFACE_EXPORT VariogramBasicModel {
    enum ModelType : qint32 {
        Nugget = 0,
        Spherical = 1,
        Exponential = 2,
        Gaussian = 3,
        Power = 4,
        Cubic = 5
    };

    double sill = 0.0;
    double angle = 0.0;      ///< Direction of anisotropy, radians.
    double majorRange = 0.0; ///< Across `angle`. Of a power structure the ranges are its exponent.
    double minorRange = 0.0; ///< Along `angle`; equal to `majorRange` when isotropic.
    ModelType type = Nugget;

    VariogramBasicModel() = default;
    VariogramBasicModel(ModelType type, double sill, double angle, double majorRange,
                        double minorRange);

    /// The value at lag `h` in the direction `theta` (radians); `sill` at every lag when a range is
    /// 0. An unknown type raises "Invalid variogram model type".
    double GetBasicModelValue(double h, double theta) const;
    /// The practical range: the lag at which the structure has reached 1 - `epsilon` of its sill
    /// along `minorRange`; HUGE_VAL of a power structure, which has no sill. Raises as above.
    double GetEpsilonRange(double epsilon) const;
    bool operator==(const VariogramBasicModel &other) const;
    bool operator!=(const VariogramBasicModel &other) const { return !(*this == other); }
};

/// The structures that hold at one time; the model is their sum.
struct DATAINTERFACE_EXPORT VariogramModelAtT {
    QVector<VariogramBasicModel> structures;

    double GetModelValue(double h, double theta) const;
    /// The largest practical range of the structures, each taken at `epsilon` divided by their
    /// number. False, with `range` HUGE_VAL, when one of them is a power structure.
    bool GetEpsilonRange(double epsilon, double &range) const;
    /// The sum of the sills; -1 when a power structure is among them.
    double GetSill() const;
    bool operator==(const VariogramModelAtT &other) const { return structures == other.structures; }
};

/// One bin of an empirical variogram.
struct EmpiricalVariogramBin {
    double lag = 0.0;       ///< Mean separation of the pairs, map units.
    double direction = 0.0; ///< Radians.
    /// Half the mean squared difference, or what the estimator puts in its place.
    double value = 0.0;
    qint32 pairCount = 0;

    bool operator==(const EmpiricalVariogramBin &other) const
    {
        return lag == other.lag && direction == other.direction && value == other.value
               && pairCount == other.pairCount;
    }
};
using EmpiricalVariogram = QVector<EmpiricalVariogramBin>;

/// What the application's fitting code keeps with a model. Its meaning is that code's: here it is
/// stored, copied and streamed to the bit. In the stream the three kinds alternate, in runs.
struct VariogramFitState {
    std::array<qint32, 11> ints{-1, -1, 1, -1, -1, -1, -1, -1, -1, -1, -1};
    std::array<double, 9> doubles{-1.0, -1.0, -1.0, -1.0, -1.0, -1.0, -1.0, -1.0, -1.0};
    std::array<quint8, 9> flags{1, 1, 1, 0, 1, 1, 1, 1, 1};

    bool operator==(const VariogramFitState &other) const
    {
        return ints == other.ints && doubles == other.doubles && flags == other.flags;
    }
};

/// What a host is shown of one structure.
struct VariogramStructureProps {
    VariogramBasicModel::ModelType type = VariogramBasicModel::Nugget;
    double sill = 0.0; ///< Of a power structure its value at the geography's diagonal; HUGE_VAL
                       ///< without a geography.
    double angle = 0.0;
    double majorRange = 0.0;
    double minorRange = 0.0;
    double epsilonRange = 0.0; ///< At 1e-6 of the sill.
    double exponent = 0.0;     ///< Of a power structure; otherwise 0.
};

/// What a host is shown of a model at one time.
struct VariogramModelAtTProps {
    double sill = 0.0;       ///< Sum of the sills; -1 once a power structure has been met.
    double range = 0.0;      ///< Largest epsilon range; HUGE_VAL with a power structure.
    double powerValue = 0.0; ///< Sum of the power structures' values at the geography's diagonal.
    QList<VariogramStructureProps> structures;
};

/// What a host is shown of a model. An id of -1 says that there is none.
struct VariogramModelProps {
    int id = -1;
    QString name;
    DataId dataset;
    DataId locations;
    int estimator = 0;
    DataId weightsDataset;
    int lagCount = 0;
    QMap<TimeStamp, VariogramModelAtTProps> models;
    bool hasPowerModel = false;
    bool isAnisotropic = false;
};

/// A model through time, in two parallel forms (at centroid support and at point support), with
/// what it was fitted from. A value: holders hand out copies.
class DATAINTERFACE_EXPORT VariogramModel {
public:
    /// Selects the estimator; the codes are those of the application's fitting code.
    enum EstimatorTypes : int {};

    QString name;
    int id = -1; ///< Given by the holder: a dataset or the manager of nonconditional models.
    int modelVersion = 0;
    int parameterSet = 0;
    QMap<TimeStamp, VariogramModelAtT> centroidModels;
    QMap<TimeStamp, VariogramModelAtT> deconvolutionModels;
    QMap<TimeStamp, EmpiricalVariogram> empiricalResults;
    DataId dataset; ///< -1 for a nonconditional model.
    DataId locations;
    int estimator = 0; ///< One of EstimatorTypes.
    DataId weightsDataset;
    int lagCount = 0;
    VariogramFitState fit;

    VariogramModel();
    /// Named "variogram model".
    explicit VariogramModel(const DataId &dataset);
    /// The five arguments after `lagCount` enter `fit` unread.
    VariogramModel(const QString &name, const DataId &dataset, const DataId &locations,
                   int estimator, const DataId &weightsDataset, int lagCount, int fitA, int fitB,
                   const DataId &fitDataset, int fitC, int fitD);
    VariogramModel(const VariogramModel &other);
    VariogramModel &operator=(const VariogramModel &other);
    ~VariogramModel();

    /// False, with `value` untouched, when no interval of the model holds the instant `t`.
    bool GetCentroidModelValue(qint64 t, double h, double theta, double &value) const;
    bool GetDeconvolutionModelValue(qint64 t, double h, double theta, double &value) const;
    /// The summary of the centroid models. `geography` may be null: power structures then have no
    /// finite value.
    VariogramModelProps GetProperties(const MGeoData *geography) const;
};

DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const VariogramBasicModel &model);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, VariogramBasicModel &model);
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const VariogramModelAtT &model);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, VariogramModelAtT &model);
/// Reading follows dataInterfaceVersionLoading; a corrupt count sets the stream's status.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const VariogramModel &model);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, VariogramModel &model);
