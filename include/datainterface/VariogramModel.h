// SPDX-License-Identifier: MIT
/// Variogram models: how the dissimilarity of two measurements grows with their separation. The
/// application fits them; the library stores, evaluates and summarises them.
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
    double majorRange = 0.0; ///< Across `angle`. In a power structure the ranges are its exponent.
    double minorRange = 0.0; ///< Along `angle`; equal to `majorRange` when isotropic.
    ModelType type = Nugget;

    VariogramBasicModel() = default;
    VariogramBasicModel(ModelType type, double sill, double angle, double majorRange,
                        double minorRange);

    /// The value at lag `h` in the direction `theta` (radians). If a range is 0 the value is `sill`
    /// at every lag. An unknown type raises "Invalid variogram model type".
    double GetBasicModelValue(double h, double theta) const;
    /// The practical range: the lag at which the structure has reached 1 - `epsilon` of its sill
    /// along `minorRange`; HUGE_VAL for a power structure, which has no sill. Raises as
    /// GetBasicModelValue does.
    double GetEpsilonRange(double epsilon) const;
    bool operator==(const VariogramBasicModel &other) const;
    bool operator!=(const VariogramBasicModel &other) const { return !(*this == other); }
};

/// The structures of a model at one time. The model is their sum.
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
    /// Half the mean squared difference, or the value that another estimator gives.
    double value = 0.0;
    qint32 pairCount = 0;

    bool operator==(const EmpiricalVariogramBin &other) const
    {
        return lag == other.lag && direction == other.direction && value == other.value
               && pairCount == other.pairCount;
    }
};
using EmpiricalVariogram = QVector<EmpiricalVariogramBin>;

/// State of the application's fitting code. The library stores, copies and streams it bit for bit
/// without interpreting it. In the stream the three kinds alternate, in runs.
struct VariogramFitState {
    std::array<qint32, 11> ints{-1, -1, 1, -1, -1, -1, -1, -1, -1, -1, -1};
    std::array<double, 9> doubles{-1.0, -1.0, -1.0, -1.0, -1.0, -1.0, -1.0, -1.0, -1.0};
    std::array<quint8, 9> flags{1, 1, 1, 0, 1, 1, 1, 1, 1};

    bool operator==(const VariogramFitState &other) const
    {
        return ints == other.ints && doubles == other.doubles && flags == other.flags;
    }
};

/// The summary of one structure that a host is given.
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

/// The summary of a model at one time that a host is given.
struct VariogramModelAtTProps {
    double sill = 0.0;       ///< Sum of the sills; -1 once a power structure has been met.
    double range = 0.0;      ///< Largest epsilon range; HUGE_VAL with a power structure.
    double powerValue = 0.0; ///< Sum of the power structures' values at the geography's diagonal.
    QList<VariogramStructureProps> structures;
};

/// The summary of a model that a host is given. An id of -1 means that there is no such model.
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

/// A model through time, in two parallel forms (at centroid support and at point support), with the
/// data that it was fitted from. A plain value: owners return copies.
class DATAINTERFACE_EXPORT VariogramModel {
public:
    /// The estimator; the application's fitting code defines the codes.
    enum EstimatorTypes : int {};

    QString name;
    int id = -1; ///< Given by the owner: a dataset or the manager of nonconditional models.
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
    /// The five arguments after `lagCount` are stored in `fit` without being interpreted.
    VariogramModel(const QString &name, const DataId &dataset, const DataId &locations,
                   int estimator, const DataId &weightsDataset, int lagCount, int fitA, int fitB,
                   const DataId &fitDataset, int fitC, int fitD);
    VariogramModel(const VariogramModel &other);
    VariogramModel &operator=(const VariogramModel &other);
    ~VariogramModel();

    /// False, with `value` unchanged, when no interval of the model contains the instant `t`.
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
/// Reading uses the form of dataInterfaceVersionLoading. A corrupt count sets the status of the
/// stream.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const VariogramModel &model);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, VariogramModel &model);
