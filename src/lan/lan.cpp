/// The LAN: gateway address, netmask and DHCP.
#include "mox/vendor/qcom/qcmap/qcmap_wrapper.h"

#include <mox/util/network_manager.h>
#include <qcmap_client.h>

#include "core/dotted_quad.h"
#include "core/first_step.h"
#include "core/log.h"

namespace mox::vendor::qcom::qcmap {

bool QcmapWrapper::GetLanConfig(std::string& gw_ip, std::string& netmask, bool& enable_dhcp,
                                std::string& dhcp_start_ip, std::string& dhcp_end_ip,
                                int& lease_time) {
  if (!Connect()) return false;

  qcmap_msgr_lan_config_v01 record = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetLANConfig(&record, &error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::GetLANConfig error %d[%x]\n", error, error);
    return false;
  }
  gw_ip = ToDottedQuad(record.gw_ip).text;
  netmask = ToDottedQuad(record.netmask).text;
  enable_dhcp = record.enable_dhcp != 0;
  dhcp_start_ip = ToDottedQuad(record.dhcp_start_ip).text;
  dhcp_end_ip = ToDottedQuad(record.dhcp_end_ip).text;
  lease_time = static_cast<int>(record.lease_time);
  SYSLOG(LOG_DEBUG, "gw [%s] nm [%s] denable [%d] dstart [%s] dend [%s] lease_time [%d]\n",
         gw_ip.c_str(), netmask.c_str(), enable_dhcp, dhcp_start_ip.c_str(), dhcp_end_ip.c_str(),
         lease_time);
  return true;
}

bool QcmapWrapper::SetLanConfig(std::string gw_ip, std::string netmask, bool enable_dhcp,
                                std::string dhcp_start_ip, std::string dhcp_end_ip,
                                uint32_t lease_time) {
  using mox::util::NetworkManager;
  if (!Connect()) return false;
  SYSLOG(LOG_DEBUG, "dhcp_start_ip %s dhcp_end_ip %s\n", dhcp_start_ip.c_str(),
         dhcp_end_ip.c_str());

  if (!NetworkManager::IsValidAddress(gw_ip, false)) {
    SYSLOG(LOG_ERR, "check gateway ip [%s]\n", gw_ip.c_str());
    return false;
  }
  if (!NetworkManager::IsValidAddress(netmask, false)) {
    SYSLOG(LOG_ERR, "check netmask [%s]\n", netmask.c_str());
    return false;
  }
  if (enable_dhcp) {
    if (!dhcp_start_ip.empty() && !NetworkManager::IsValidAddress(dhcp_start_ip, false)) {
      SYSLOG(LOG_ERR, "check dhcp start ip [%s]\n", dhcp_start_ip.c_str());
      return false;
    }
    if (!dhcp_end_ip.empty() && !NetworkManager::IsValidAddress(dhcp_end_ip, false)) {
      SYSLOG(LOG_ERR, "check dhcp end ip [%s]\n", dhcp_end_ip.c_str());
      return false;
    }
    if (dhcp_start_ip.empty() || dhcp_end_ip.empty()) {
      if (!NetworkManager::GetIpv4DhcpRange(gw_ip, netmask, dhcp_start_ip, dhcp_end_ip)) {
        return false;
      }
    } else if (!NetworkManager::CheckIpv4DhcpRangeValidation(gw_ip, netmask, dhcp_start_ip,
                                                             dhcp_end_ip)) {
      return false;
    }
  }

  // Starts from the server's own record, so that members added by later versions keep their values.
  qcmap_msgr_lan_config_v01 record = {};
  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->GetLANConfig(&record, &error)) {
    SYSLOG(LOG_WARNING, "QCMAP_Client::GetLanConfig error %d[0x%x] : Just warning\n", error, error);
  }
  record.gw_ip = FromDottedQuad(gw_ip);
  record.netmask = FromDottedQuad(netmask);
  record.enable_dhcp = enable_dhcp ? 1 : 0;
  record.dhcp_start_ip = FromDottedQuad(dhcp_start_ip);
  record.dhcp_end_ip = FromDottedQuad(dhcp_end_ip);
  record.lease_time = lease_time;
  SYSLOG(LOG_DEBUG, "gw_ip %x netmask %x enable_dhcp %d dhcp_start_ip %x dhcp_end_ip %x\n",
         record.gw_ip, record.netmask, record.enable_dhcp, record.dhcp_start_ip,
         record.dhcp_end_ip);

  if (!client_->SetLANConfig(record, &error)) {
    SYSLOG(LOG_ERR, "SetLANConfig errno [%d]\n", error);
    return false;
  }
  return true;
}

bool QcmapWrapper::ActivateLan() {
  if (!Connect()) return false;

  qmi_error_type_v01 error = QMI_ERR_NONE_V01;
  if (!client_->ActivateLAN(&error)) {
    SYSLOG(LOG_ERR, "QCMAP_Client::ActivateLan  error %d[0x%x]\n", error, error);
    return false;
  }
  return true;
}

}  // namespace mox::vendor::qcom::qcmap
