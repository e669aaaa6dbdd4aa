// libzelsvm: support vector machines in double precision, trained and used from memory.
//
// Bad input, bad parameters and contradictory shapes throw AppException, failures of the machine or
// of a library RuntimeException, exhausted memory std::bad_alloc; what was there before stays as it
// was. The engine is the tools' own and runs on the processor, on as many threads as
// OMP_NUM_THREADS or the machine allows; results do not depend on their number.
//
// All functions may be called from any thread and at the same time. Several threads may use one
// object at once: a model predicts for all of them side by side. Only moving, assigning and
// destroying an object take place alone. For many calls at once one thread each is best
// (Sink::threads).
// Borrowed memory must stay as it is while something looks at it.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#define ZELSVM_API __attribute__((visibility("default")))

namespace zelsvm {

// The library's own.
namespace detail {
struct Rows;
struct ModelState;
struct Access;
}  // namespace detail

// The caller's fault: the text is a plain sentence.
class ZELSVM_API AppException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ~AppException() override;
};

// A failure of the machine, of a library or of a file's contents.
class ZELSVM_API RuntimeException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  ~RuntimeException() override;
};

// Numbers that lie in the caller's memory and are never written: number (i, j) is
// first[i * rowStride + j * columnStride]. Strides count numbers and may be 0 or negative.
template <typename Number>
struct Table {
  // Row after row without gaps.
  Table(const Number* first, std::size_t rows, std::size_t columns)
      : Table(first, rows, columns, static_cast<std::ptrdiff_t>(columns), 1) {}
  Table(const Number* first, std::size_t rows, std::size_t columns, std::ptrdiff_t rowStride,
        std::ptrdiff_t columnStride)
      : first(first),
        rows(rows),
        columns(columns),
        rowStride(rowStride),
        columnStride(columnStride) {}

  const Number* first;
  std::size_t rows;
  std::size_t columns;
  std::ptrdiff_t rowStride;
  std::ptrdiff_t columnStride;
};

enum class Compressed { rows, columns };

// Arrays of compressed sparse rows as Samples::csr(values, columns, rowOffsets, features) explains
// them, in any of these types, never written. Compressed columns are not read.
struct SparseArrays {
  std::variant<std::span<const double>, std::span<const float>> values;
  std::variant<std::span<const std::int32_t>, std::span<const std::int64_t>> columns;
  std::variant<std::span<const std::int32_t>, std::span<const std::int64_t>> rowOffsets;
  std::size_t features = 0;
  Compressed order = Compressed::rows;
};

// What the columns of given kernel values stand for: the training samples, or the support vectors
// of the model that predicts, in its order.
enum class KernelColumns { trainingSamples, supportVectors };

// Kernel values that the caller computes as they are needed.
struct KernelRows {
  std::size_t rows = 0;
  std::size_t columns = 0;
  // Writes K(row, column) for all columns. Called on the thread that trains or predicts and on no
  // other; must not call the library. A row may be asked for several times: as in training a cache
  // holds cacheMegabytes of them. An exception ends the call and reaches its caller.
  std::function<void(std::size_t row, std::span<double> values)> compute = {};
  // K(row, row) of training samples; empty: taken from the rows, each of which is computed once
  // more for it.
  std::vector<double> diagonal = {};
};

// A call ended as Sink::cancelled wished.
class ZELSVM_API Cancelled : public std::runtime_error {
 public:
  Cancelled();
  ~Cancelled() override;
};

// Rows of features, dense or sparse; copies share the same memory. Vectors that are given away
// (std::move) are owned, anything else is borrowed. Features must be finite to be trained on.
class ZELSVM_API Samples {
 public:
  // Row after row, `features` values each. Throws AppException unless there is at least one whole
  // row.
  static Samples dense(std::span<const double> values, std::size_t features);
  static Samples dense(std::vector<double>&& values, std::size_t features);

  // Compressed sparse rows: row i holds values[k] at column columns[k], counted from 0, for
  // rowOffsets[i] <= k < rowOffsets[i + 1]. A row's columns come in any order, each once. Throws
  // AppException for arrays that contradict each other.
  static Samples csr(std::span<const double> values, std::span<const int> columns,
                     std::span<const int> rowOffsets, std::size_t features);
  static Samples csr(std::vector<double>&& values, std::vector<int>&& columns,
                     std::vector<int>&& rowOffsets, std::size_t features);

  // Single precision, columns one after the other, rows with gaps: borrowed, and read in place
  // without a copy. Throws AppException unless there is at least one row and one feature.
  static Samples dense(const Table<double>& values);
  static Samples dense(const Table<float>& values);
  // Doubles and 32-bit numbers are borrowed; of floats and of 64-bit numbers a copy in those types
  // is made here and kept. Throws AppException for what csr() above refuses, for compressed columns
  // and for more than 2147483647 values.
  static Samples csr(const SparseArrays& arrays);

  // Kernel values in place of features, for Kernel::precomputed: a row per sample, borrowed and
  // read in place. To train on they are square and taken to be symmetric, in the order of the
  // samples; a training that they do not suit (not positive semidefinite) ends all the same, if not
  // at its tolerance. Values that are not finite are refused where they are read. Throws
  // AppException unless there is at least one value, or for KernelRows that lack a function or have
  // a diagonal of another length than their rows.
  static Samples kernel(const Table<double>& values,
                        KernelColumns columns = KernelColumns::trainingSamples);
  static Samples kernel(const Table<float>& values,
                        KernelColumns columns = KernelColumns::trainingSamples);
  static Samples kernel(KernelRows values, KernelColumns columns = KernelColumns::trainingSamples);

  // There is no move, as it would leave samples without content.
  Samples(const Samples&) = default;
  Samples& operator=(const Samples&) = default;
  ~Samples() = default;

  [[nodiscard]] std::size_t rows() const;
  [[nodiscard]] std::size_t features() const;  // columns of kernel values

 private:
  friend struct detail::Access;
  explicit Samples(std::shared_ptr<const detail::Rows> content);
  std::shared_ptr<const detail::Rows> content;
};

enum class Formulation {
  cClassification = 0,
  nuClassification = 1,
  oneClass = 2,
  epsilonRegression = 3,
  nuRegression = 4,
};

// Of u and v: linear u'v, polynomial (gamma u'v + coef0)^degree, radial exp(-gamma |u - v|^2),
// sigmoid tanh(gamma u'v + coef0).
// precomputed: the values are given (Samples::kernel), and gamma, coef0 and degree mean nothing.
enum class Kernel { linear = 0, polynomial = 1, radial = 2, sigmoid = 3, precomputed = 4 };

// Equal ends stand for no interval.
struct Interval {
  double lower = 0;
  double upper = 0;
};

// A number, or a rule that makes it of the samples that are trained on: one over the number of
// features, or over that times the variance of all their values, those that are not stored counted
// as 0, after scaling and by the samples' weights (a variance of 0 counts as 1).
struct Gamma {
  enum Rule { number, oneOverFeatures, oneOverFeaturesTimesVariance };

  constexpr Gamma(double value) : rule(number), value(value) {}
  constexpr Gamma(Rule rule) : rule(rule) {}

  Rule rule;
  double value = 0;
};

// What to train and how, with the tools' defaults. All numbers must be finite and in their ranges,
// whether the formulation and the kernel use them or not; else AppException names the member before
// anything is done.
struct Parameters {
  Formulation formulation = Formulation::cClassification;
  Kernel kernel = Kernel::radial;
  Gamma gamma = Gamma::oneOverFeatures;  // at least 0
  double coef0 = 0;                      // any
  double degree = 3;                     // at least 0
  double cost = 1;                       // above 0: C of C-classification and regressions
  std::map<double, double> classWeights =
      {};                              // above 0: factors by label of cost, with nu of weights
  double nu = 0.5;                     // above 0, at most 1: of the nu formulations and one-class
  double epsilon = 0.1;                // at least 0: of epsilon regression
  double tolerance = 0.001;            // above 0: the gap at which a solve ends
  std::uint64_t maxIterations = 0;     // of each solve, exactly; 0: no limit
  std::uint64_t cacheMegabytes = 100;  // for kernel rows
  bool shrinking = true;
  bool probability = false;  // train what predict() needs for probabilities; not for one-class
  unsigned randomSeed = 0;   // of folds, also those of probability
  // The model scales features from their training range to this one; the ends ascend.
  Interval featureScale = {};
  Interval targetScale = {};  // the same for the targets of a regression
};

// A seed that differs from second to second.
[[nodiscard]] ZELSVM_API unsigned seedFromClock();

// How far a running solver is. A call may run many, for probabilities, folds and pairs of labels.
// Of pairs that are trained at the same time, the calling thread's is shown.
struct Progress {
  std::uint64_t iterations = 0;
  double gap = 0;  // the largest violation, which ends at or below the tolerance
  double tolerance = 0;
  double cacheHitRate = 0;  // of all kernel rows asked for
  std::uint64_t supportVectors = 0;
  double seconds = 0;           // since the call began
  std::uint64_t pairs = 1;      // of labels, to be trained
  std::uint64_t pairsDone = 0;  // of those
};

// Where a call's messages and progress go, nowhere where a function is empty, and what it is
// controlled by. Functions are called on the calling
// thread; must not call the library. An exception ends the call and reaches its caller.
struct Sink {
  std::function<void(std::string_view)> message = {};  // pieces of what the tools print
  std::function<void(const Progress&)> progress = {};
  bool verbose = true;           // informational messages, too
  double progressSeconds = 0.2;  // least time between two reports of progress

  // Threads that work for the call, itself counted: a number of its own, which other calls do not
  // take part in, or 0 for those of OMP_NUM_THREADS or the machine, which all calls share. More
  // than the machine has processors are as many as those. Results do not depend on it.
  unsigned threads = 0;
  // Set by any thread, it makes the call end by Cancelled within some hundredths of a second,
  // whatever it does. It outlives the call. May be null.
  const std::atomic<bool>* cancelled = nullptr;
};

// Of samples, in their order.
struct Predictions {
  // Label, side (1 or -1) or target. Where all decision values of a sample are 0 it gets the first
  // of the labels, or side 1.
  std::vector<double> values;
  // One per pair of labels (first, second), (first, third), … (second, third), …, sample by sample;
  // above 0 for the pair's first. One for one-class, none for regression.
  std::vector<double> decisionValues;
  std::vector<double> probabilities;  // one per label in Model::labels() order, sample by sample
};

// How the solve of a pair of labels went, or the one solve of one-class and regression.
struct Solve {
  std::uint64_t iterations = 0;
  bool converged =
      false;             // within the tolerance; else stopped by maxIterations or for want of gain
  double gap = 0;        // the largest violation that is left, as in Progress
  double objective = 0;  // of the dual problem, minimised
  double seconds = 0;
};

// A trained model, movable. Once moved away it throws AppException.
class ZELSVM_API Model {
 public:
  // Reads a model file of either form; indexBase is the number of the first feature in a text file,
  // 0 or 1. What the tools warn
  // of, such as text that counts as 0 and lines that are ignored, is passed over in silence.
  static Model load(const std::string& path, unsigned indexBase = 1, const Sink& sink = {});
  Model(Model&&) noexcept;
  Model& operator=(Model&&) noexcept;
  ~Model();

  // Writes a model file, which the tools read, too: with six digits a number, but labels and
  // bounds of scaling that need more in full, and without support vectors whose features are all 0.
  // Throws AppException for a model of a precomputed kernel, which that form has no room for.
  void save(const std::string& path, unsigned indexBase = 1) const;

  // The model without the loss of a bit, and back: it predicts the same and tells the same, but for
  // solves(). Bytes that were cut or changed, or made by a newer version, are refused by
  // RuntimeException. saveExact() writes them to a file, which load() and zelsvm-predict read.
  [[nodiscard]] std::string toBytes() const;
  static Model fromBytes(std::string_view bytes);
  void saveExact(const std::string& path) const;

  // Features that the samples lack are 0, features that the model lacks count in distances only.
  // With probability a classification goes by the likeliest label; throws AppException for a model
  // trained without probability, and for one-class. A model of a precomputed kernel takes kernel
  // values with all training samples or with its support vectors.
  [[nodiscard]] Predictions predict(const Samples& samples, bool probability = false,
                                    const Sink& sink = {}) const;

  [[nodiscard]] Formulation formulation() const;
  [[nodiscard]] std::vector<double> labels() const;  // 1 and -1 for one-class, none for regression
  [[nodiscard]] std::size_t supportVectorCount() const;
  [[nodiscard]] std::size_t featureCount() const;  // training samples of a precomputed kernel
  [[nodiscard]] bool hasProbability() const;
  // Scale of the Laplace distribution of a regression's residuals, in the targets' units; 0 unless
  // trained with probability.
  [[nodiscard]] double residualScale() const;

  // What was learnt. A decision function is f(x) = sum_v c_v K(s_v, x) + intercept, where s_v and x
  // are scaled if the model scales. There is one per pair of labels in the order of
  // Predictions::decisionValues, one in all for one-class and regression.
  // Support vectors stand class by class in the order of labels().
  [[nodiscard]] std::vector<std::size_t> supportCounts() const;  // one per label, none: regression
  // Their rows in the training samples, from 0; empty for a model read from a text file.
  [[nodiscard]] std::vector<std::size_t> supportIndices() const;
  // The vectors, owned, as they were given to train(). Of a scaled model read from a text file they
  // are unscaled, with rounding; then they are dense.
  // Throws AppException for a precomputed kernel, whose vectors have indices only.
  [[nodiscard]] Samples supportVectors() const;
  // c, function by function, a number per support vector: multiplier times sign of the label, 0 for
  // vectors of other labels; differences of multipliers for regression.
  [[nodiscard]] std::vector<double> dualCoefficients() const;
  [[nodiscard]] std::vector<double> intercepts() const;  // one per function
  // Those in force, gamma as it was computed. Of a model read from a text file only what such a
  // file tells; the rest are defaults.
  [[nodiscard]] Parameters parameters() const;
  // One per function, of the training that made this object; empty for a model that was read and
  // for one of one label, which needs no solve. Solves of folds and probabilities are not told.
  [[nodiscard]] std::vector<Solve> solves() const;

 private:
  friend struct detail::Access;
  explicit Model(std::unique_ptr<detail::ModelState> state);
  std::unique_ptr<detail::ModelState> state;
};

// Of predictions against labels or targets.
struct Score {
  double accuracy = 0;            // in per cent; classification and one-class
  double meanSquaredError = 0;    // regression
  double squaredCorrelation = 0;  // Pearson's; regression
};

struct CrossValidation {
  std::vector<double> predictions;  // each by a model that has not seen its sample
  Score overall;
  std::vector<Score> folds;
};

// One label or target per sample, any finite numbers.
[[nodiscard]] ZELSVM_API Model train(const Samples& samples, std::span<const double> targets,
                                     const Parameters& parameters = {}, const Sink& sink = {});

// At least 2 folds; more folds than samples are as many as samples.
[[nodiscard]] ZELSVM_API CrossValidation crossValidate(const Samples& samples,
                                                       std::span<const double> targets,
                                                       const Parameters& parameters,
                                                       std::size_t folds, const Sink& sink = {});

// Where a training begins: at the dual coefficients of an earlier one, alpha y, of a regression
// alpha - alpha*, one pair of labels after the other and in each the first samples in order;
// further samples begin at 0. Any finite numbers do, as they are cut to the bounds and shifted
// until they satisfy the constraints, and the solution is the same; near ones save iterations. What
// probabilities need is found as without.
struct Start {
  std::span<const double> coefficients = {};  // empty: the usual start
};

// The same with a weight for every sample: a finite factor, 0 or more, of the bounds of its
// multipliers. A whole number counts as so many copies, 0 as if the sample were not there; without
// weights each sample counts 1. Where nu is a share of the samples it is one of the weight, and so
// are probabilities and scores. (Whole weights leave one-class training whole multipliers, others
// do not.) In cross-validation the folds are those of the samples that count; the others are
// predicted by one fold after the other and do not count in the scores.
[[nodiscard]] ZELSVM_API Model train(const Samples& samples, std::span<const double> targets,
                                     const Parameters& parameters, std::span<const double> weights,
                                     const Sink& sink = {}, const Start& start = {});
[[nodiscard]] ZELSVM_API CrossValidation
crossValidate(const Samples& samples, std::span<const double> targets, const Parameters& parameters,
              std::size_t folds, std::span<const double> weights, const Sink& sink = {});

}  // namespace zelsvm
