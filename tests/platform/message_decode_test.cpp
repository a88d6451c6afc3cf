/// What the decoder makes of indications.
#include <gtest/gtest.h>
#include <qmi_client.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>

namespace {

std::string FromHex(const std::string& digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  return bytes;
}

TEST(MessageDecode, GivesTheRecordOfEachIndicationThatIsWhole) {
  std::ifstream file(MVQ_QCMAP_INDICATIONS);
  std::string line, elements, expected;
  std::getline(file, line);  // names of the columns
  while (std::getline(file, line)) {
    uint32_t id, size;
    int result;
    std::istringstream(line) >> std::hex >> id >> std::dec >> size >> result >> elements >>
        expected;
    elements = FromHex(elements);
    expected = FromHex(expected);
    expected.resize(size);
    std::string record(size, '\xA5');
    EXPECT_EQ(
        qmi_client_message_decode(nullptr, QMI_IDL_INDICATION, id, elements.data(),
                                  static_cast<unsigned>(elements.size()), record.data(), size),
        result)
        << line;
    EXPECT_TRUE(result != 0 || record == expected) << line;
  }
  char record[28];
  EXPECT_EQ(qmi_client_message_decode(nullptr, 1, 0x23, "", 0, record, 28), 1) << "no indication";
  EXPECT_EQ(qmi_client_message_decode(nullptr, 2, 0x23, "", 0, nullptr, 28), 2) << "no record";
  EXPECT_EQ(qmi_client_message_decode(nullptr, 2, 0x23, nullptr, 1, record, 28), 3) << "no bytes";
  EXPECT_EQ(qmi_client_message_decode(nullptr, 2, 0x23, nullptr, 0, record, 28), 3) << "empty";
}

}  // namespace
