/// A library in which a request throws.
#include <qcmap_client.h>

bool QCMAP_Client::ActivateLAN(qmi_error_type_v01*) {
  throw 7;
}
