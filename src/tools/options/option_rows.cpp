#include <array>

#include "tools/options/option_table.h"

namespace zelsvm_opt {
namespace {

template <typename... Tools>
constexpr unsigned bits(Tools... tools) {
  return (static_cast<unsigned>(tools) | ...);
}

constexpr unsigned train = bits(Tool::train);
constexpr unsigned predict = bits(Tool::predict);
constexpr unsigned scale = bits(Tool::scale);
constexpr unsigned test = bits(Tool::test);
constexpr unsigned training = train | test;
constexpr unsigned running = training | predict;
constexpr unsigned all = running | scale;

using Opt = ZelSvmOpt;
using enum OptionGroup;

constexpr std::array options = {
    Option{'s', "svm-type", training, &Opt::svmType, "type",
           "0 C-classification,1 nu-classification,2 one-class,3 epsilon regression,"
           "4 nu-regression",
           problem, "formulation",
           R"(-s svm type : type of SVM (default 0)
    0 -- C-classification
    1 -- nu-classification
    2 -- one-class
    3 -- epsilon regression
    4 -- nu-regression
)",
           R"(Formulation:
0 C-classification (default),
1 nu-classification,
2 one-class,
3 epsilon regression,
4 nu-regression.
)"},
    Option{'t', "kernel", training, &Opt::kernelType, "kernel",
           "0 linear,1 polynomial,2 radial basis function,3 sigmoid", problem, "kernel function",
           R"(-t kernel type : type of SVM kernel (default 2)
    0 -- linear: u'*v
    1 -- polynomial: (gamma*u'*v + coef0)^degree
    2 -- radial basis function: exp(-gamma*|u-v|^2)
    3 -- sigmoid: tanh(gamma*u'*v + coef0)
)",
           R"(Kernel function:
0 linear,
1 polynomial (gamma u'v + coef0)^degree,
2 radial basis function exp(-gamma |u - v|^2) (default),
3 sigmoid tanh(gamma u'v + coef0).
)"},
    Option{
        'c', "cost", training, &Opt::cost, "cost", "", problem, "C, the price of an error",
        R"(-c cost : C parameter of C-classification, epsilon and nu-regressions
          (default 1)
)",
        R"(C, the price of an error, greater than 0, in C-classification and both regressions (default 1).
)"},
    Option{'n', "nu", training, &Opt::nu, "nu", "", problem, "nu",
           R"(-n nu : nu parameter in nu-classification, one-class and nu-regression
        (default 0.5)
)",
           R"(Greater than 0 and at most 1: a bound on the fraction of errors and support vectors in
nu-classification, one-class and nu-regression (default 0.5).
)"},
    Option{'w', "weights", training, &Opt::weights, "weights", "", problem,
           "factors of C for single labels",
           R"(-w weight : weight scales of the C parameter for C-classification in the form of
            "label1:w1 label2:w2 ..."
)",
           R"(Factors of C for single labels in C-classification, in the form
.Qq label1:w1 label2:w2 ... .
)"},
    Option{'x', "x-scale", training, &Opt::xScale, "lower:upper", "", data,
           "interval of the features",
           R"(-x xscale : x scale parameter for training data in the form of "x1:x2"
)",
           R"(Scales every feature into this interval.
The scaling goes into the model and prediction repeats it.
)"},
    Option{'x', "x-scale", scale, &Opt::xScale, "lower:upper", "", data, "interval of the features",
           R"(-x xscale : x scale parameter for training data in the form of "x1:x2"
        (default "-1:1")
)",
           R"(Interval of the features (default \-1:1; an empty argument leaves them unscaled).
)"},
    Option{
        'y', "y-scale", training, &Opt::yScale, "lower:upper", "", data, "interval of the targets",
        R"(-y yscale : y scale parameter for training data in the form of "y1:y2"
)",
        R"(Scales the targets of a regression likewise; predictions and errors are reported unscaled.
)"},
    Option{'y', "y-scale", scale, &Opt::yScale, "lower:upper", "", data,
           "interval of the labels or targets",
           R"(-y yscale : y scale parameter for training data in the form of "y1:y2"
)",
           R"(Interval of the labels or targets (default: unscaled).
)"},
    Option{'s', "save", scale, &Opt::saveFile, "file", "file", data, "save ranges",
           R"(-s save : file name for saving scaling parameters of input data
)",
           R"(Saves the ranges and intervals there.
)"},
    Option{'r', "restore", scale, &Opt::restoreFile, "file", "file", data, "restore ranges",
           R"(-r restore : file name for restoring scaling parameters of input data
)",
           R"(Restores them from there; they replace those of the command line.
A file that was cut short is refused, and a warning on standard error names features that it has no
ranges for.
)"},
    Option{'p', "epsilon", training, &Opt::epsilon, "epsilon", "", problem,
           "epsilon of epsilon regression",
           R"(-p epsilon : epsilon parameter in epsilon regression (default 0.1)
)",
           R"(Deviations below it cost nothing in epsilon regression (default 0.1).
)"},
    Option{'r', "coef0", training, &Opt::coef0, "coef0", "", problem, "coef0 of the kernel",
           R"(-r coef0 : coef0 in polynomial and sigmoid kernels (default 0)
)",
           R"(Constant of the polynomial and sigmoid kernels (default 0).
)"},
    Option{'d', "degree", training, &Opt::degree, "degree", "", problem, "degree of the kernel",
           R"(-d degree : integer degree in polynomial kernel (default 3)
)",
           R"(Degree of the polynomial kernel, a whole number (default 3).
)"},
    Option{
        'g', "gamma", training, &Opt::gamma, "gamma", "", problem, "gamma of the kernel",
        R"(-g gamma : gamma coefficient in polynomial, radial basis and sigmoid kernels
           (default 1/num_features)
)",
        R"(Coefficient of the kernel function (default and for 0: one divided by the number of features).
)"},
    Option{
        'v', "folds", training, &Opt::foldCount, "folds", "", run, "cross-validate",
        R"(-v n-fold : cross validation fold count
)",
        R"(Cross-validates with this many folds (2 to 1000000) and prints what the held-out samples come to.
)"},
    Option{
        'R', "seed", training, &Opt::randomSeed, "seed", "", run, "seed of the folds", "",
        R"(Seed of the folds: the same number gives the same folds on every machine (default and for 0: the
clock).
)"},
    Option{'b', "probability", training, &Opt::probability, "probability", "0 no,1 yes", problem,
           "probabilities",
           R"(-b probability : probability estimates in classification and regression SVM,
                 must be 0 or 1 (default 0)
)",
           R"(1 also fits what
.Fl b
of
.Xr zelsvm-predict 1
needs: a sigmoid for each pair of labels, or the Laplace scale of a regression (default 0).
It takes five more trainings of each pair, on four fifths of the samples; not for one-class.
A warning on standard error names a label of which one fifth holds all samples: the training then
fails.
)"},
    Option{'b', "probability", predict, &Opt::probability, "probability", "0 no,1 yes", run,
           "probabilities",
           R"(-b probability : probability prediction, must be 0 or 1 (default 0)
)",
           R"(1 asks for probabilities from a model trained with
.Fl b Cm 1 :
the first line of
.Ar output_file
then names the labels, and their probabilities in this order follow each prediction, which is the
most probable label.
For a regression the scale of a Laplace distribution around the prediction is printed, in units of
the targets.
)"},
    Option{'e', "tolerance", training, &Opt::tolerance, "tolerance", "", run, "stopping tolerance",
           R"(-e eps : tolerance parameter for achieving optimal condition (default 0.001)
)",
           R"(The solver stops when the optimality conditions are violated by less (default 0.001).
)"},
    Option{'L', "max-iterations", training, &Opt::maxIterations, "iterations", "", run,
           "limit of iterations", "",
           R"(Stops the solver after so many iterations (default 0, no limit).
)"},
    Option{'m', "cache", training, &Opt::cacheSize, "cache", "", run,
           "memory for kernel rows in MB",
           R"(-m cache : amount of graphical memory cache in MB (default 100)
)",
           R"(Memory for kernel rows in MB, below 4096 (default 100).
)"},
    Option{'k', "shrinking", training, &Opt::shrinking, "shrinking", "0 no,1 yes", run, "shrinking",
           R"(-k shrinking : shrinking the training data set, must be 0 or 1 (default 1)
)",
           R"(0 keeps variables that have settled at a bound in the working set (default 1).
)"},
    Option{'G', "device", running, &Opt::gpuDevice, "device", "", run, "number of the GPU",
           R"(-G GPU device : the index of the GPU device to be used (default 0)
)",
           R"(Number of the GPU (default 0; the engine on the processor is device 0).
)"},
    Option{'I', "index-base", all, &Opt::indexBase, "base", "0 from 0,1 from 1", data,
           "number of the first feature",
           R"(-I index base : base array index of input data, must be 0 or 1 (default 1)
)",
           R"(Number of the first feature, 0 or 1, in data and models (default 1).
)"},
    Option{'X', "dense", train, Flag{&Opt::denseMatrix, true}, "", "", data,
           "hold the data as dense rows",
           R"(-X dense matrix : loading input data as dense matrix, must be 0 or 1 (default 0)
)",
           R"(Holds the data as dense rows; takes no argument.
The same file is read.
Faster where most features of most samples are given.
)"},
    Option{'X', "dense", predict, Flag{&Opt::denseMatrix, true}, "", "", data,
           "hold the data as dense rows",
           R"(-X dense matrix : load input data as dense matrix, must be 0 or 1 (default 0)
)",
           R"(Holds the data as dense rows; takes no argument.
)"},
    Option{'M', "features", test, &Opt::testFeatures, "features", "", run,
           "columns of the synthetic data", "",
           R"(Columns of the synthetic data (default 5).
)"},
    Option{'N', "samples", test, &Opt::testSamples, "samples", "", run,
           "rows of the synthetic data", "",
           R"(Rows of the synthetic data (default 12).
)"},
    Option{'T', "default-size", test, Flag{&Opt::resetTestSize, true}, "", "", run,
           "keep the size of the synthetic data", "",
           R"(Keeps both at their defaults.
)"},
    Option{'S', "algorithm-name", test, &Opt::algorithmName, "name", "", run, "stored and not used",
           "",
           R"(Stored and not used.
)"},
    Option{'K', "kernel-name", test, &Opt::kernelName, "name", "", run, "stored and not used", "",
           R"(Stored and not used.
)"},
    Option{'q', "quiet", all, Flag{&Opt::verbose, false}, "", "", run, "print less",
           R"(-q quiet mode
)",
           R"(Prints less.
)"},
    Option{noLetter, "strict", all, Flag{&Opt::strict, true}, "", "", run, "warnings are errors",
           "",
           R"(Makes an error of each warning, see
.Sx DIAGNOSTICS .
)"},
    Option{'h', "", all, Ignored{}, "", "", run, "no effect", "",
           R"(Has no effect.
)"},
    Option{noLetter, "help", everyName, Flag{&Opt::help, true}, "", "", run,
           "show the options and end", "",
           R"(Prints the options and ends.
)"},
    Option{noLetter, "version", everyName, Flag{&Opt::version, true}, "", "", run,
           "show the version and end", "",
           R"(Prints the version and ends.
)"},
};

}  // namespace

std::span<const Option> optionTable() { return options; }

}  // namespace zelsvm_opt
