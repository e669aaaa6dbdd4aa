#include "platform/host/sets/host_set_machine.h"

#include <variant>

#include "platform/host/sets/part_sums.h"
#include "platform/host/sets/set_matrix.h"
#include "platform/host/sets/set_rows.h"
#include "platform/host/sets/set_solver.h"

namespace zelsvm {
namespace {

class HostSetMachine : public SetMachine {
 public:
  void begin(const SetTask& newTask) override {
    task = newTask;
    task.precision == SetPrecision::single ? assign<float>() : assign<double>();
  }

  void end() override { task = {}; }

  void addRows(std::span<const WeightedRow> weighted, std::span<double> sums) override {
    std::visit([&](auto& r) { r.add(weighted, sums); }, rows);
  }

  void addExactly(std::span<const WeightedRow> weighted, std::span<const unsigned> samples,
                  std::span<double> sums) override {
    part.add(task, weighted, samples, sums);
  }

  [[nodiscard]] bool addsRoughly() const override { return true; }
  [[nodiscard]] std::uint64_t rowsAtOnce() const override { return 512; }
  [[nodiscard]] std::uint64_t rowsMade() const override {
    return std::visit([](const auto& r) { return r.made(); }, rows);
  }
  [[nodiscard]] double cacheHitRate() const override {
    return std::visit([](const auto& r) { return r.hitRate(); }, rows);
  }

  void chooseSet(std::span<const unsigned> samples, SetPrecision precision) override {
    matrix.make(task, samples, precision);
  }

  void addSetRows(std::span<const double> weights, std::span<double> sums) override {
    matrix.addRows(weights, sums);
  }

  SetSteps solveSet(const SetVariables& variables, std::span<double> sums, double tolerance,
                    std::uint64_t mostSteps) override {
    return solver.solve(matrix, variables, sums, tolerance, mostSteps);
  }

 private:
  template <typename T>
  void assign() {
    if (!std::holds_alternative<SetRows<T>>(rows)) rows.template emplace<SetRows<T>>();
    std::get<SetRows<T>>(rows).assign(task);
  }

  SetTask task{};
  std::variant<SetRows<float>, SetRows<double>> rows;
  PartSums part;
  SetMatrix matrix;
  SetSolver solver;
};

}  // namespace

std::unique_ptr<SetMachine> makeHostSetMachine() { return std::make_unique<HostSetMachine>(); }

}  // namespace zelsvm
