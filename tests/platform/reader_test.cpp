/// That records are read only from what has been printed of them.
#include "records/reader.h"

#include <gtest/gtest.h>

namespace {

template <typename Record>
bool Read(std::string_view text, std::string& printed) {
  Record record{};
  seam::Reader reader(text);
  reader.Read(record);
  printed.clear();
  seam::Printer(printed).Put(record);
  return bool(reader);
}

/// Checks that a record is read from `json`, but not from less of it or with any other byte.
template <typename Record>
void ExpectOnly(const std::string& json) {
  std::string printed;
  EXPECT_TRUE(Read<Record>(json, printed) && printed == json) << printed;
  for (size_t i = 0; i < json.size(); ++i) {
    std::string damaged = json;
    damaged[i] = '#';
    EXPECT_FALSE(Read<Record>(damaged, printed) && printed == json) << damaged;
    EXPECT_FALSE(Read<Record>(std::string_view(json).substr(0, i), printed)) << json << ": " << i;
  }
}

TEST(Reader, ReadsNothingThatIsDamagedOrDoesNotFit) {
  using Vlan = qcmap_msgr_vlan_config_v01;
  using Policy = qcmap_msgr_net_policy_info_v01;
  ExpectOnly<Policy>(
      R"({"tech_pref":1,"ip_family":"V6","v4_profile_id":[1,2],"v6_profile_id":[3,4]})");
  ExpectOnly<Vlan>(R"({"iface_name":"0\u001f~\"\\\u00e9789abcdef","vlan_id":-7})");
  ExpectOnly<qcmap_nw_params_t>(R"(["1.2.3.4","0.0.0.0","255.0.0.1"])");
  ExpectOnly<qcmap_nw_params_t>(R"(["2001:db8::66","::","::1"])");
  std::string printed;
  EXPECT_FALSE(Read<Vlan>(R"({"iface_name":"0123456789abcdefg","vlan_id":1})", printed));
  for (const char* wrong : {R"("V5","v4_profile_id":[1,2])", R"(4,"v4_profile_id":[1,2,3])"})
    EXPECT_FALSE(Read<Policy>(
        R"({"tech_pref":1,"ip_family":)" + std::string(wrong) + R"(,"v6_profile_id":[3,4]})",
        printed))
        << wrong;
  const Vlan vlan{};
  printed.clear();
  seam::Printer(printed).Put(seam::Counted(&vlan, -1, 1));
  EXPECT_EQ(printed, "[]") << "no entry, whatever a negative count means";
}

}  // namespace
