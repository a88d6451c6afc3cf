/// The seam to the QMI client library: the decoder of indications.
#pragma once

struct qmi_client_struct;
using qmi_client_type = qmi_client_struct*;

constexpr int QMI_IDL_INDICATION = 2;

/// Decodes a message of `length` bytes into `record`. Returns 0 on success; after any other result
/// the content of `record` is unspecified.
extern "C" __attribute__((visibility("default"))) int qmi_client_message_decode(
    qmi_client_type client, int message_type, unsigned int message_id, const void* bytes,
    unsigned int length, void* record, unsigned int record_size);
