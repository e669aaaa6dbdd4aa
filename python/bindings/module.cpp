// zelsvm._engine: the library's functions on Python's arrays, as thin as it can be.
#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <nanobind/stl/function.h>
#include <nanobind/stl/map.h>
#include <nanobind/stl/optional.h>
#include <nanobind/stl/pair.h>
#include <nanobind/stl/string.h>
#include <nanobind/stl/vector.h>
#include <zelsvm/zelsvm.h>

#include <functional>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <utility>

#include "arrays.h"
#include "engine_run.h"

namespace nb = nanobind;
using namespace nb::literals;
using zelpy::SamplesOfArrays;
using zelsvm::Model;
using zelsvm::Parameters;

namespace {

using Vector = nb::ndarray<const double, nb::ndim<1>, nb::c_contig, nb::device::cpu>;

std::span<const double> spanOf(const Vector& vector) { return {vector.data(), vector.size()}; }

Model train(const SamplesOfArrays& rows, const Vector& targets, const Parameters& parameters,
            const std::optional<Vector>& weights, unsigned threads,
            const std::function<void(const std::string&)>& message) {
  return zelpy::interruptibly({threads, message}, [&](const zelsvm::Sink& sink) {
    return weights
               ? zelsvm::train(rows.samples, spanOf(targets), parameters, spanOf(*weights), sink)
               : zelsvm::train(rows.samples, spanOf(targets), parameters, sink);
  });
}

// What is over before anybody could press a key is computed on the calling thread.
zelsvm::Predictions predictions(const Model& model, const SamplesOfArrays& rows, bool probability,
                                unsigned threads) {
  constexpr double shortWork = 1e7;  // products
  const double work = static_cast<double>(rows.samples.rows()) *
                      static_cast<double>(rows.samples.features()) *
                      static_cast<double>(model.supportVectorCount());
  const auto body = [&](const zelsvm::Sink& sink) {
    return model.predict(rows.samples, probability, sink);
  };
  if (work > shortWork) return zelpy::interruptibly({threads}, body);
  const nb::gil_scoped_release unlocked;
  zelsvm::Sink sink;
  sink.threads = threads;
  return body(sink);
}

zelpy::Doubles predict(const Model& model, const SamplesOfArrays& rows, unsigned threads) {
  return zelpy::toArray(std::move(predictions(model, rows, false, threads).values));
}

zelpy::Doubles decide(const Model& model, const SamplesOfArrays& rows, unsigned threads) {
  auto values = predictions(model, rows, false, threads).decisionValues;
  const std::size_t columns = values.size() / rows.samples.rows();
  return zelpy::toArray(std::move(values), columns);
}

zelpy::Doubles probabilities(const Model& model, const SamplesOfArrays& rows, unsigned threads) {
  return zelpy::toArray(std::move(predictions(model, rows, true, threads).probabilities),
                        model.labels().size());
}

zelpy::Doubles dualCoefficients(const Model& model) {
  return zelpy::toArray(model.dualCoefficients(), model.supportVectorCount());
}

nb::bytes toBytes(const Model& model) {
  const std::string bytes = model.toBytes();
  return nb::bytes(bytes.data(), bytes.size());
}

Model fromBytes(const nb::bytes& content) {
  return Model::fromBytes({content.c_str(), content.size()});
}

void bindParameters(nb::module_& m) {
  nb::enum_<zelsvm::Formulation>(m, "Formulation")
      .value("C_CLASSIFICATION", zelsvm::Formulation::cClassification)
      .value("NU_CLASSIFICATION", zelsvm::Formulation::nuClassification)
      .value("ONE_CLASS", zelsvm::Formulation::oneClass)
      .value("EPSILON_REGRESSION", zelsvm::Formulation::epsilonRegression)
      .value("NU_REGRESSION", zelsvm::Formulation::nuRegression);
  nb::enum_<zelsvm::Kernel>(m, "Kernel")
      .value("LINEAR", zelsvm::Kernel::linear)
      .value("POLYNOMIAL", zelsvm::Kernel::polynomial)
      .value("RADIAL", zelsvm::Kernel::radial)
      .value("SIGMOID", zelsvm::Kernel::sigmoid)
      .value("PRECOMPUTED", zelsvm::Kernel::precomputed);
  nb::class_<zelsvm::Interval>(m, "Interval")
      .def(nb::init<double, double>(), "lower"_a, "upper"_a)
      .def_ro("lower", &zelsvm::Interval::lower)
      .def_ro("upper", &zelsvm::Interval::upper);
  nb::class_<Parameters>(m, "Parameters")
      .def(nb::init<>())
      .def_rw("formulation", &Parameters::formulation)
      .def_rw("kernel", &Parameters::kernel)
      .def_prop_rw(
          "gamma", [](const Parameters& parameters) { return parameters.gamma.value; },
          [](Parameters& parameters, double gamma) { parameters.gamma = gamma; })
      .def_rw("coef0", &Parameters::coef0)
      .def_rw("degree", &Parameters::degree)
      .def_rw("cost", &Parameters::cost)
      .def_rw("class_weights", &Parameters::classWeights)
      .def_rw("nu", &Parameters::nu)
      .def_rw("epsilon", &Parameters::epsilon)
      .def_rw("tolerance", &Parameters::tolerance)
      .def_rw("max_iterations", &Parameters::maxIterations)
      .def_rw("cache_megabytes", &Parameters::cacheMegabytes)
      .def_rw("shrinking", &Parameters::shrinking)
      .def_rw("probability", &Parameters::probability)
      .def_rw("random_seed", &Parameters::randomSeed)
      .def_rw("feature_scale", &Parameters::featureScale);
}

void bindSamples(nb::module_& m) {
  nb::class_<SamplesOfArrays>(m, "Samples", "Rows in borrowed arrays.")
      .def("rows", [](const SamplesOfArrays& rows) { return rows.samples.rows(); })
      .def_static("dense", &zelpy::denseSamples, "values"_a)
      .def_static("kernel", &zelpy::kernelSamples, "values"_a, "of_support_vectors"_a)
      .def_static("csr", &zelpy::sparseSamples, "values"_a, "columns"_a, "offsets"_a, "features"_a);
}

void bindModel(nb::module_& m) {
  nb::class_<zelsvm::Solve>(m, "Solve")
      .def_ro("iterations", &zelsvm::Solve::iterations)
      .def_ro("converged", &zelsvm::Solve::converged)
      .def_ro("gap", &zelsvm::Solve::gap)
      .def_ro("objective", &zelsvm::Solve::objective)
      .def_ro("seconds", &zelsvm::Solve::seconds);
  nb::class_<Model>(m, "Model")
      .def_static(
          "load", [](const std::string& path) { return Model::load(path); }, "path"_a,
          nb::call_guard<nb::gil_scoped_release>())
      .def(
          "save", [](const Model& model, const std::string& path) { model.save(path); }, "path"_a,
          nb::call_guard<nb::gil_scoped_release>())
      .def("save_exact", &Model::saveExact, "path"_a, nb::call_guard<nb::gil_scoped_release>())
      .def("to_bytes", &toBytes)
      .def_static("from_bytes", &fromBytes, "content"_a)
      .def("__getstate__", &toBytes)
      .def("__setstate__",
           [](Model& model, const nb::bytes& state) { new (&model) Model(fromBytes(state)); })
      .def("predict", &predict, "samples"_a, "threads"_a)
      .def("decide", &decide, "samples"_a, "threads"_a)
      .def("probabilities", &probabilities, "samples"_a, "threads"_a)
      .def("labels", [](const Model& model) { return zelpy::toArray(model.labels()); })
      .def("support_counts",
           [](const Model& model) { return zelpy::toArray(model.supportCounts()); })
      .def("support_indices",
           [](const Model& model) { return zelpy::toArray(model.supportIndices()); })
      .def("dual_coefficients", &dualCoefficients)
      .def("intercepts", [](const Model& model) { return zelpy::toArray(model.intercepts()); })
      .def("formulation", &Model::formulation)
      .def("feature_count", &Model::featureCount)
      .def("parameters", &Model::parameters)
      .def("solves", &Model::solves);
}

}  // namespace

NB_MODULE(_engine, m) {
  m.doc() = "The engine of zelsvm.";
  nb::register_exception_translator([](const std::exception_ptr& thrown, void*) {
    try {
      std::rethrow_exception(thrown);
    } catch (const zelsvm::AppException& error) {
      PyErr_SetString(PyExc_ValueError, error.what());
    }
  });
  bindParameters(m);
  bindSamples(m);
  bindModel(m);
  m.def("train", &train, "samples"_a, "targets"_a, "parameters"_a, "weights"_a, "threads"_a,
        "message"_a = nb::none());
}
