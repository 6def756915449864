// The import child of the tests: nothing but the hidden verb.
#include <cstdlib>
#include <cstring>

#include "engine/import/Import.h"

int main(int count, char** arguments) {
  if (count != 4 || std::strcmp(arguments[1], engine::kImportWorkerVerb) != 0) return 2;
  return engine::RunImportWorker(arguments[2], std::atoi(arguments[3]));
}
