/// Shows the model.
#pragma once

#include <string>

#include "server/requests.h"

namespace sim {

std::string ModelAsText(Model& model);
/// One object on one line.
std::string ModelAsJson(Model& model);

}  // namespace sim
