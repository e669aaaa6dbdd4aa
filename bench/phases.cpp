// The tools with a clock at each seam between their parts: runs as zelsvm-train or zelsvm-predict
// does, by the name that it is started under, and at the end writes what each phase took and did as
// one line of JSON to the file that BENCH_PHASES names.
//
// The linker sends calls between parts here first (--wrap); CMakeLists.txt lists their symbols.
#include <cublas_v2.h>
#include <cusparse.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "zeldplus/zelsvm/engine/kernel_rows.h"
#include "zeldplus/zelsvm/engine/rskernel.h"
#include "zeldplus/zelsvm/engine/smo_steps.h"
#include "zeldplus/zelsvm/model/decision_functions.h"
#include "zeldplus/zelsvm/model/model_file.h"
#include "zeldplus/zelsvm/model/prediction_file.h"
#include "zelsvm/driver/zelsvm_main.h"

// What callers of the function reach in its place; it stays reachable as NAMEBehind.
#define ZEL_SEAM(result, name, parameters)                    \
  result name##Behind parameters asm("__real_" SEAM_##name);  \
  result name##Clocked parameters asm("__wrap_" SEAM_##name); \
  result name##Clocked parameters

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

// What a phase took and what it did, the least that any way of doing it would.
struct Phase {
  const char* name;
  std::atomic<double> seconds = 0;
  std::atomic<double> bytes = 0;
  std::atomic<double> flops = 0;
  std::atomic<double> exponentials = 0;
};

// The phases and counts of this process, written when it ends.
struct Report {
  Phase reading{"reading"};
  Phase packing{"packing"};
  Phase rows{"rows"};
  Phase guesses{"guesses"};
  Phase sweeps{"sweeps"};
  Phase products{"products"};
  Phase decisions{"decisions"};
  Phase writing{"writing"};
  // Of the model read.
  double vectorValues = 0;
  double vectorCount = 0;
  bool exponentialKernel = false;
  std::atomic<std::uint64_t> rowsAsked = 0;
  std::atomic<std::uint64_t> rowsMissed = 0;
  std::atomic<std::uint64_t> rowsComputed = 0;
  std::atomic<unsigned> members = 1;  // threads that train label pairs side by side

  Report() = default;
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;
  ~Report() {
    const char* const path = std::getenv("BENCH_PHASES");
    std::FILE* const file = path == nullptr ? nullptr : std::fopen(path, "w");
    if (file == nullptr) return;
    std::fprintf(file, "{\"rows_asked\": %lu, \"rows_missed\": %lu, \"rows_computed\": %lu, ",
                 rowsAsked.load(), rowsMissed.load(), rowsComputed.load());
    const char* separator = "\"phases\": {";
    for (const Phase* phase :
         {&reading, &packing, &rows, &guesses, &sweeps, &products, &decisions, &writing}) {
      std::fprintf(file,
                   "%s\"%s\": {\"s\": %.9g, \"bytes\": %.9g, \"flops\": %.9g, "
                   "\"exponentials\": %.9g}",
                   separator, phase->name, phase->seconds.load(), phase->bytes.load(),
                   phase->flops.load(), phase->exponentials.load());
      separator = ", ";
    }
    std::fprintf(file, "}}\n");
    std::fclose(file);
  }
};

Report report;

// Time within another timed phase counts for the inner one only, and of threads side by side each
// one's time for its part, so that all phases together take no longer than the process.
class Clock {
 public:
  explicit Clock(Phase& phase) : outer(std::exchange(current, &phase)) { charge(outer); }
  Clock(const Clock&) = delete;
  Clock& operator=(const Clock&) = delete;
  ~Clock() {
    charge(current);
    current = outer;
  }

 private:
  using Time = std::chrono::steady_clock;
  static void charge(Phase* phase) {
    const Time::time_point now = Time::now();
    if (phase != nullptr)
      phase->seconds += std::chrono::duration<double>(now - last).count() / report.members;
    last = now;
  }

  static inline thread_local Phase* current = nullptr;
  static inline thread_local Time::time_point last;
  Phase* outer;
};

double fileBytes(const std::string& path) {
  std::error_code ignored;
  const std::uintmax_t size = std::filesystem::file_size(path, ignored);
  return ignored ? 0 : static_cast<double>(size);
}

bool hasExponential(SVM_KERNEL kernel) {
  return kernel == SVM_KERNEL_RADIAL || kernel == SVM_KERNEL_SIGMOID;
}

class ClockedRows : public KernelRows<double> {
 public:
  explicit ClockedRows(std::unique_ptr<KernelRows> rows) : inner(std::move(rows)) {}
  void assign(zelmag::AbstractMatrix<double>& samples, SVM_KERNEL kernelType,
              const double* norms) override {
    const Clock clock(report.packing);
    inner->assign(samples, kernelType, norms);
    flopsPerRow = 2 * static_cast<double>(samples.valueCount());
    exponentialsPerRow = hasExponential(kernelType) ? static_cast<double>(samples.rows()) : 0;
  }
  [[nodiscard]] unsigned mostTogether() const override { return inner->mostTogether(); }
  PairKernel* pairs() override { return inner->pairs(); }
  void compute(const RowTarget<double>* rows, unsigned count) override {
    const Clock clock(report.rows);
    inner->compute(rows, count);
    ++report.rowsMissed;
    report.rowsComputed += count;
    report.rows.flops += count * flopsPerRow;
    report.rows.exponentials += count * exponentialsPerRow;
  }

 private:
  std::unique_ptr<KernelRows> inner;
  double flopsPerRow = 0;
  double exponentialsPerRow = 0;
};

// An iteration reads every variable's violation and state and its value of the first row to select
// the second index, and both rows' values, the violation and the state to update and select anew.
class ClockedSteps : public SmoSteps<double> {
 public:
  explicit ClockedSteps(std::unique_ptr<SmoSteps> steps) : inner(std::move(steps)) {}
  void begin(const SmoVariables<double>& variables) override {
    const Clock clock(report.sweeps);
    inner->begin(variables);
    samples = static_cast<double>(variables.samples);
    count = variables.count;
  }
  void addColumns(const double* columns, std::uint64_t ld, unsigned first,
                  unsigned number) override {
    const Clock clock(report.sweeps);
    inner->addColumns(columns, ld, first, number);
    report.sweeps.bytes += samples * number * sizeof(double);
  }
  void activate(unsigned activeCount) override {
    const Clock clock(report.sweeps);
    inner->activate(activeCount);
  }
  void select(SmoSelection<double>& selection, SmoSelection<double>& second) override {
    const Clock clock(report.sweeps);
    inner->select(selection, second);
  }
  unsigned findDelta(const SmoSelection<double>& selection, const SmoSelection<double>& second,
                     const double* row, const double* row2) override {
    const Clock clock(report.sweeps);
    report.sweeps.bytes += samples * sizeof(double) + count * (sizeof(double) + 1);
    return inner->findDelta(selection, second, row, row2);
  }
  void updateGradient(const SmoPair<double>& pair) override {
    const Clock clock(report.sweeps);
    report.sweeps.bytes += samples * 2 * sizeof(double) + count * (2 * sizeof(double) + 1);
    inner->updateGradient(pair);
  }
  void reduce(const SmoSelection<double>& selection, const SmoSelection<double>& second) override {
    const Clock clock(report.sweeps);
    inner->reduce(selection, second);
  }
  void storeGradient() override {
    const Clock clock(report.sweeps);
    inner->storeGradient();
  }
  void likelySamples(std::vector<std::uint64_t>& likely, unsigned most,
                     const std::vector<std::uint32_t>& isKnown, PairKernel& kernel) override {
    const Clock clock(report.guesses);
    inner->likelySamples(likely, most, isKnown, kernel);
  }

 private:
  std::unique_ptr<SmoSteps> inner;
  double samples = 0;
  double count = 0;
};

}  // namespace

ZEL_SEAM(void, loadData,
         (zelsvm_main::ZelSvmMain<double> * driver, const std::string& path,
          std::uint64_t minimumCols)) {
  const Clock clock(report.reading);
  report.reading.bytes += fileBytes(path);
  loadDataBehind(driver, path, minimumCols);
}

ZEL_SEAM(LoadedModel<double>, readModel,
         (const std::string& path, std::uint64_t indexBase, bool dense)) {
  const Clock clock(report.reading);
  report.reading.bytes += fileBytes(path);
  LoadedModel<double> loaded = readModelBehind(path, indexBase, dense);
  report.vectorValues = static_cast<double>(loaded.model->vectors().valueCount());
  report.vectorCount = static_cast<double>(loaded.model->vectors().rows());
  report.exponentialKernel = hasExponential(loaded.context->kernelType);
  return loaded;
}

ZEL_SEAM(std::unique_ptr<KernelRows<double>>, makeKernelRows, ()) {
  return std::make_unique<ClockedRows>(makeKernelRowsBehind());
}

ZEL_SEAM(std::unique_ptr<SmoSteps<double>>, makeSmoSteps, (SVM_KERNEL kernelType, bool nu)) {
  return std::make_unique<ClockedSteps>(makeSmoStepsBehind(kernelType, nu));
}

ZEL_SEAM(void, runMembers, (unsigned count, const std::function<void(unsigned)>& member)) {
  report.members = count;
  runMembersBehind(count, member);
  report.members = 1;
}

ZEL_SEAM(const double*, getRow, (SmoKernel<double> * kernel, std::uint64_t index)) {
  ++report.rowsAsked;
  return getRowBehind(kernel, index);
}

ZEL_SEAM(cublasStatus_t, denseProduct,
         (cublasHandle_t handle, cublasOperation_t transA, cublasOperation_t transB, int m, int n,
          int k, const double* alpha, const double* a, int lda, const double* b, int ldb,
          const double* beta, double* c, int ldc)) {
  const Clock clock(report.products);
  return denseProductBehind(handle, transA, transB, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

ZEL_SEAM(cusparseStatus_t, sparseProduct,
         (cusparseHandle_t handle, cusparseOperation_t opA, cusparseOperation_t opB,
          const void* alpha, cusparseSpMatDescr_t a, cusparseDnMatDescr_t b, const void* beta,
          cusparseDnMatDescr_t c, cudaDataType type, cusparseSpMMAlg_t algorithm, void* buffer)) {
  const Clock clock(report.products);
  return sparseProductBehind(handle, opA, opB, alpha, a, b, beta, c, type, algorithm, buffer);
}

ZEL_SEAM(void, evaluate,
         (DecisionFunctions<double> * functions, zel::DeviceVector<double>& values,
          zel::DeviceVector<double>& products, std::uint64_t pitch,
          const zel::DeviceVector<double>& testNorms, std::uint64_t samples)) {
  const Clock clock(report.decisions);
  const auto count = static_cast<double>(samples);
  report.products.flops += 2 * count * report.vectorValues;
  report.decisions.exponentials += report.exponentialKernel ? count * report.vectorCount : 0;
  report.decisions.flops += 2 * count * report.vectorCount *
                            static_cast<double>(functions->bytesPerSample() / sizeof(double));
  evaluateBehind(functions, values, products, pitch, testNorms, samples);
}

ZEL_SEAM(void, writeModel,
         (const std::string& path, std::uint64_t indexBase, const SvmContext<double>& context,
          const GenericModel<double>& model)) {
  const Clock clock(report.writing);
  writeModelBehind(path, indexBase, context, model);
  report.writing.bytes += fileBytes(path);
}

ZEL_SEAM(void, writePredictions,
         (const std::string& path, const HostVector<double>& predictions,
          const HostVector<double>& probabilities, const GenericModel<double>& model)) {
  const Clock clock(report.writing);
  writePredictionsBehind(path, predictions, probabilities, model);
  report.writing.bytes += fileBytes(path);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
