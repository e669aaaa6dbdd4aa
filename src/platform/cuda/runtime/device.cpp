#include "platform/cuda/runtime/device.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "base/errors.h"

namespace zel {
namespace {

struct DriverText {
  int code;
  const char* text;
};

constexpr std::array driverTexts = {
    DriverText{1, "invalid value"},
    DriverText{2, "out of memory"},
    DriverText{3, "not initialized"},
    DriverText{4, "deinitialized"},
    DriverText{100, "no device"},
    DriverText{101, "invalid device"},
    DriverText{200, "invalid image"},
    DriverText{201, "invalid context"},
    DriverText{202, "context already current"},
    DriverText{205, "map failed"},
    DriverText{206, "unmap failed"},
    DriverText{207, "array is mapped"},
    DriverText{208, "already mapped"},
    DriverText{209, "no binary for gpu"},
    DriverText{210, "already acquired"},
    DriverText{211, "not mapped"},
    DriverText{212, "not mapped as array"},
    DriverText{213, "not mapped as pointer"},
    DriverText{214, "ECC uncorrectable"},
    DriverText{215, "unsupported limit"},
    DriverText{300, "invalid source"},
    DriverText{301, "file not found"},
    DriverText{302, "shared object symbol not found"},
    DriverText{303, "shared object init failed"},
    DriverText{304, "operating system"},
    DriverText{400, "invalid handle"},
    DriverText{500, "not found"},
    DriverText{600, "not ready"},
    DriverText{701, "launch out of resources"},
    DriverText{702, "launch timeout"},
    DriverText{703, "launch incompatible texturing"},
    DriverText{719, "launch failed"},
    DriverText{999, "unknown"},
};

const char* driverText(int code) {
  const auto found = std::find_if(driverTexts.begin(), driverTexts.end(),
                                  [code](const DriverText& entry) { return entry.code == code; });
  return found == driverTexts.end() ? "obscure" : found->text;
}

cudaDeviceProp currentDeviceProperties(const std::source_location& where) {
  int device = 0;
  cudaDeviceProp properties{};
  zelSafeCall(cudaGetDevice(&device), where);
  zelSafeCall(cudaGetDeviceProperties(&properties, device), where);
  return properties;
}

}  // namespace

void throwCudaError(cudaError_t result, const std::source_location& where) {
  throw RuntimeException("zelSafeCall", "CUDA runtime error", cudaGetErrorString(result),
                         sourceName(where).c_str(), static_cast<int>(where.line()));
}

void throwDriverError(CUresult result, const std::source_location& where) {
  char text[messageCapacity];
  std::snprintf(text, sizeof text, "%s(%i): CUDA driver error - %s\n", sourceName(where).c_str(),
                static_cast<int>(where.line()), driverText(result));
  const auto here = std::source_location::current();
  throwRuntimeException(text, sourceName(here).c_str(), static_cast<int>(here.line()));
}

bool hasDoublePrecision(int major, int minor) { return major > 1 || (major == 1 && minor >= 3); }

void checkDoublePrecision() {
  const auto properties = currentDeviceProperties(std::source_location::current());
  if (!hasDoublePrecision(properties.major, properties.minor))
    throw AppException("The GPU is incapable of performing double precision arithmetic.");
}

std::uint64_t freeDeviceMemory() {
  std::size_t free = 0;
  std::size_t total = 0;
  zelSafeDriverCall(cuMemGetInfo_v2(&free, &total));
  return free;
}

int multiProcessorCount() {
  static const int count =
      currentDeviceProperties(std::source_location::current()).multiProcessorCount;
  return count;
}

int residentBlocks(const void* kernel, int blockSize, std::size_t sharedBytes,
                   const std::source_location& where) {
  int blocks = 0;
  zelSafeCall(cudaOccupancyMaxActiveBlocksPerMultiprocessorWithFlags(&blocks, kernel, blockSize,
                                                                     sharedBytes, 0),
              where);
  return blocks * multiProcessorCount();
}

}  // namespace zel
