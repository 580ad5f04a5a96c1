#pragma once

#include <memory>

#include "TarnelAd/TNLDeviceFacts.h"

// The device facts in force: the host's (TNLSetup::setDeviceFacts), else the Linux facts without
// host information, made on first use.
std::shared_ptr<TNLDeviceFacts> TNLCurrentDeviceFacts();

// Installs the facts that TNLCurrentDeviceFacts returns from now on; null restores the default.
void TNLSetCurrentDeviceFacts(std::shared_ptr<TNLDeviceFacts> facts);
