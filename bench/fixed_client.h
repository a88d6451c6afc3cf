/// Libraries in the vendor's place that answer at once, from fixed data and without allocating.
#pragma once

/// Whether the next requests are refused. Selecting a profile is always granted.
extern bool refuses_requests;
/// Whether the decoder fails.
extern bool refuses_decoding;
/// The Mobile AP handle in the next indication; the client's own is 7.
extern unsigned int indication_handle;
/// The lengths of the lists.
extern unsigned int policy_entries;
extern unsigned int mapping_entries;
extern unsigned int vlan_entries;
/// The state of both families.
extern bool call_is_up;
