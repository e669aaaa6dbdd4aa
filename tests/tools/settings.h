// Options as text, so that tests compare all settings at once.
#pragma once

#include <sstream>
#include <string>

#include "tools/options.h"

namespace zeltest {

// Every setting as text, so that any two can be compared and shown.
inline std::string settings(const zelsvm_opt::ZelSvmOpt& o) {
  std::string text;
  const auto add = [&text](const char* name, const auto& value) {
    std::ostringstream stream;
    stream << name << '=' << value << '\n';
    text += stream.str();
  };
  add("svmType", o.svmType), add("kernelType", o.kernelType), add("cost", o.cost);
  add("tolerance", o.tolerance), add("epsilon", o.epsilon), add("nu", o.nu);
  add("weights", o.weights), add("xScale", o.xScale), add("yScale", o.yScale);
  add("saveFile", o.saveFile), add("restoreFile", o.restoreFile), add("coef0", o.coef0);
  add("degree", o.degree), add("gamma", o.gamma), add("cacheSize", o.cacheSize);
  add("foldCount", o.foldCount), add("probability", o.probability), add("shrinking", o.shrinking);
  add("gpuDevice", o.gpuDevice), add("indexBase", o.indexBase), add("randomSeed", o.randomSeed);
  add("algorithmName", o.algorithmName), add("kernelName", o.kernelName);
  add("testFeatures", o.testFeatures), add("testSamples", o.testSamples);
  add("maxIterations", o.maxIterations), add("denseMatrix", o.denseMatrix);
  add("resetTestSize", o.resetTestSize), add("verbose", o.verbose);
  add("inputFile", o.inputFile), add("modelFile", o.modelFile), add("outputFile", o.outputFile);
  return text;
}

// The settings with one of them replaced.
inline std::string changed(std::string text, const std::string& name, const std::string& value) {
  const auto begin = ("\n" + text).find("\n" + name + "=");
  if (begin == std::string::npos) return "no setting " + name;
  const auto end = text.find('\n', begin);
  return text.replace(begin, end - begin, name + "=" + value);
}

inline const std::string defaults =
    "svmType=0\nkernelType=2\ncost=1\ntolerance=0.001\nepsilon=0.1\nnu=0.5\nweights=\nxScale=\n"
    "yScale=\nsaveFile=\nrestoreFile=\ncoef0=0\ndegree=3\ngamma=0\ncacheSize=100\nfoldCount=1\n"
    "probability=0\nshrinking=1\ngpuDevice=0\nindexBase=1\nrandomSeed=0\n"
    "algorithmName=smo-C-classification\nkernelName=radial\ntestFeatures=5\ntestSamples=12\n"
    "maxIterations=0\ndenseMatrix=0\nresetTestSize=0\nverbose=1\ninputFile=\nmodelFile=\n"
    "outputFile=\n";

inline std::string defaultsOf(const std::string& tool) {
  if (tool == "zelsvm-scale") return changed(defaults, "xScale", "-1:1");
  if (tool == "zelsvm-test") return changed(defaults, "denseMatrix", "1");
  return defaults;
}

}  // namespace zeltest
