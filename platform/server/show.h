/// Shows the model.
#pragma once

#include <string>

#include "server/requests.h"

namespace sim {

std::string ModelAsText(Model& model);

}  // namespace sim
