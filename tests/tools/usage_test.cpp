// What the tools say about themselves.
#include "tools/usage.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/command_line.h"

namespace {

using zelsvm_opt::Tool;
using zelsvm_opt::usageText;
using zeltest::parse;

constexpr const char* trainUsage =
    R"(Usage: zelsvm-train [options] training_data [model_file]
options:
-s svm type : type of SVM (default 0)
    0 -- C-classification
    1 -- nu-classification
    2 -- one-class
    3 -- epsilon regression
    4 -- nu-regression
-t kernel type : type of SVM kernel (default 2)
    0 -- linear: u'*v
    1 -- polynomial: (gamma*u'*v + coef0)^degree
    2 -- radial basis function: exp(-gamma*|u-v|^2)
    3 -- sigmoid: tanh(gamma*u'*v + coef0)
-c cost : C parameter of C-classification, epsilon and nu-regressions
          (default 1)
-n nu : nu parameter in nu-classification, one-class and nu-regression
        (default 0.5)
-w weight : weight scales of the C parameter for C-classification in the form of
            "label1:w1 label2:w2 ..."
-x xscale : x scale parameter for training data in the form of "x1:x2"
-y yscale : y scale parameter for training data in the form of "y1:y2"
-p epsilon : epsilon parameter in epsilon regression (default 0.1)
-r coef0 : coef0 in polynomial and sigmoid kernels (default 0)
-d degree : integer degree in polynomial kernel (default 3)
-g gamma : gamma coefficient in polynomial, radial basis and sigmoid kernels
           (default 1/num_features)
-v n-fold : cross validation fold count
-b probability : probability estimates in classification and regression SVM,
                 must be 0 or 1 (default 0)
-e eps : tolerance parameter for achieving optimal condition (default 0.001)
-m cache : amount of graphical memory cache in MB (default 100)
-k shrinking : shrinking the training data set, must be 0 or 1 (default 1)
-G GPU device : the index of the GPU device to be used (default 0)
-I index base : base array index of input data, must be 0 or 1 (default 1)
-X dense matrix : loading input data as dense matrix, must be 0 or 1 (default 0)
-q quiet mode
)";

constexpr const char* predictUsage =
    R"(Usage: zelsvm-predict [options] test_data model_file output_file
options:
-b probability : probability prediction, must be 0 or 1 (default 0)
-G GPU device : the index of the GPU device to be used (default 0)
-I index base : base array index of input data, must be 0 or 1 (default 1)
-X dense matrix : load input data as dense matrix, must be 0 or 1 (default 0)
-q quiet mode
)";

constexpr const char* scaleUsage =
    R"(Usage: zelsvm-scale [options] input_file output_file
options:
-x xscale : x scale parameter for training data in the form of "x1:x2"
        (default "-1:1")
-y yscale : y scale parameter for training data in the form of "y1:y2"
-s save : file name for saving scaling parameters of input data
-r restore : file name for restoring scaling parameters of input data
-I index base : base array index of input data, must be 0 or 1 (default 1)
-q quiet mode
)";

TEST(Usage, Texts) {
  EXPECT_EQ(usageText(Tool::train), trainUsage);
  EXPECT_EQ(usageText(Tool::predict), predictUsage);
  EXPECT_EQ(usageText(Tool::scale), scaleUsage);
  EXPECT_EQ(usageText(Tool::test), "");
  EXPECT_EQ(usageText(Tool::none), "");
}

TEST(Usage, AnswersToHelpAndVersion) {
  const auto answer = [](const std::vector<std::string>& words) {
    return zelsvm_opt::answerTo(parse(words));
  };
  EXPECT_EQ(answer({"zelsvm-scale", "-h", "data"}), "");
  EXPECT_EQ(answer({"zelsvm-scale", "--", "--help"}), "");
  EXPECT_EQ(answer({"zelsvm-scale", "--help", "data"}), std::string(scaleUsage) +
                                                            R"(
options with their long names, --name argument or --name=argument:
  -x, --x-scale lower:upper  interval of the features
  -y, --y-scale lower:upper  interval of the labels or targets
  -s, --save file            save ranges
  -r, --restore file         restore ranges
  -I, --index-base base      number of the first feature
  -q, --quiet                print less
      --strict               warnings are errors
  -h                         no effect
      --help                 show the options and end
      --version              show the version and end
)");
  const std::string test = answer({"zelsvm-test", "--help"});
  EXPECT_EQ(test.substr(0, test.find('\n')), "Usage: zelsvm-test [options] [training_data]");
  EXPECT_NE(answer({"other", "--help"}).find(" zelsvm-predict,"), std::string::npos);
  EXPECT_EQ(answer({"zelsvm-predict", "--version"}).find("zelsvm-predict "), 0U);
  EXPECT_EQ(answer({"other", "--help", "--version"}).find("zelsvm "), 0U);
}

}  // namespace
