#include "export.h"

const char* zox_GetStringStatus(int status) {
  switch (status) {
    case ZOX_STS_NO_ERROR:
      return "No error";
    case ZOX_STS_BAD_PARAM:
      return "Invalid, out of range or unsupported parameter";
    case ZOX_STS_NO_MEMORY:
      return "Not enough memory for the function";
    case ZOX_STS_BAD_DATA:
      return "Incorrect data found (exception) during the execution";
    default:
      return "Unknown Status";
  }
}

ZOX_SECOND_NAME(zox_GetStringStatus);
