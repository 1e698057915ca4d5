// The recorded platform's functions, and what they answered so far.
#pragma once

#include <string>

#include "platform/simulator/machine.h"

namespace recorder {

// What was answered, as a machine; all else is a healthy one's, and nobody asked for it.
simulator::Machine& Recording();

// The address of a symbol. A platform without it ends the process with a message: the module
// could not have been loaded over it either.
void* FindSymbol(const char* name);

// A function of the platform; of a method the first parameter is the object.
template <typename Function>
Function* FindFunction(const char* name) {
  return reinterpret_cast<Function*>(FindSymbol(name));
}

}  // namespace recorder
