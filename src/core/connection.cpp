/// The connection to the server: the liveness probe and the attempt to connect.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <atomic>

#include <mox/util/process_control.h>
#include <qcmap_client.h>

#include "core/log.h"
#include "core/unlocked.h"

namespace mox::vendor::qcom::qcmap {

namespace {

std::atomic<bool> attempt_running{false};

/// Permission to attempt a connection. One thread of the process has it at a time.
class Attempt {
 public:
  Attempt() : granted_(!attempt_running.exchange(true, std::memory_order_acq_rel)) {}
  ~Attempt() {
    if (granted_) attempt_running.store(false, std::memory_order_release);
  }
  Attempt(const Attempt&) = delete;
  Attempt& operator=(const Attempt&) = delete;

  [[nodiscard]] bool IsGranted() const { return granted_; }

 private:
  const bool granted_;
};

/// Creates the client of an attempt, and deletes it again unless the attempt has connected, even
/// when a request throws. The member points to the client from the start, because indications may
/// arrive at once.
class AttemptedClient {
 public:
  AttemptedClient(QCMAP_Client*& client, const bool& connected)
      : client_(client), connected_(connected) {
    Store(client_, new QCMAP_Client(&QcmapWrapper::EvtCb));
  }
  ~AttemptedClient() {
    if (!Load(connected_)) Delete();
  }
  AttemptedClient(const AttemptedClient&) = delete;
  AttemptedClient& operator=(const AttemptedClient&) = delete;

  void Delete() {
    delete client_;
    Store(client_, nullptr);
  }

 private:
  QCMAP_Client*& client_;
  const bool& connected_;
};

}  // namespace

bool QcmapWrapper::IsQcmapAlive() {
  const int pid = mox::util::ProcessControl::GetPidByProcessName("QCMAP_ConnectionManager", 200);
  SYSLOG(LOG_DEBUG, "QCMAP_ConnectionManager pid %d\n", pid);
  return pid >= 0;
}

bool QcmapWrapper::ConnectToQcmapIfNeeded() {
  if (Load(connected_)) return true;
  if (Load(client_) != nullptr) return Load(connected_);

  const Attempt attempt;
  if (!attempt.IsGranted()) return false;
  // Another thread may have connected after the first check and before this thread was granted.
  if (Load(connected_)) return true;

  if (!IsQcmapAlive()) {
    SYSLOG(LOG_WARNING, "QCMAP server is not alive");
    return false;
  }

  AttemptedClient client(client_, connected_);
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->EnableMobileAP(&error)) {
    SYSLOG(LOG_ERR, "MobileAP Enable failed err [%d]\n", error);
  }

  qcmap_msgr_mobile_ap_status_enum_v01 status = {};
  if (client_->GetMobileAPStatus(&status, &error)) {
    Store(connected_, status == QCMAP_MSGR_MOBILE_AP_STATUS_CONNECTED_V01);
  }
  if (!Load(connected_)) {
    SYSLOG(LOG_WARNING, "It's not connected delete it\n");
    client.Delete();
    SYSLOG(LOG_DEBUG, "Mobile AP is %s\n", "Disconnected");
    return false;
  }

  SYSLOG(LOG_DEBUG, "Mobile AP is %s\n", "Connected");
  return true;
}

}  // namespace mox::vendor::qcom::qcmap
