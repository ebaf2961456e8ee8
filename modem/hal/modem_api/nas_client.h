// SPDX-License-Identifier: Apache-2.0
/* What the NAS clients do beyond the service client. */
#pragma once

#include "qmi_cci.h"
#include "qmi_nas.h"
#include "service_client.h"

/* Bind a client to the first (0) or second (1) subscription. The request goes out after every
 * connection attempt; after a failed one handle is null, and the framework refuses it. */
void nas_0_client_bind(qmi_client_type handle);
void nas_1_client_bind(qmi_client_type handle);

/* Asks for the serving-system indication by the client's synchronous send. Returns the framework's
 * result; resp is cleared first. */
int nas_client_register_indications(client_send_msg_sync send, nas_response_v01& resp);
