// SPDX-License-Identifier: MIT
/// \file
/// \brief The address that the controller listens on, and the socket that does.
#ifndef SIMULATOR_LISTEN_ADDRESS_H
#define SIMULATOR_LISTEN_ADDRESS_H

#include "simulator/file_descriptor.h"

#include <memory>
#include <string>

namespace simulator
{

/// Nobody outside the machine gets in, unless it is told otherwise.
constexpr const char* defaultListenAddress = "127.0.0.1";

/// A non-blocking socket that listens on `address`, IPv4 or IPv6 in digits, and `port`, 0 for a free one. Throws
/// std::invalid_argument for what is no address, std::runtime_error with a message that says what to do when nobody
/// can listen there.
std::unique_ptr<FileDescriptor> listenOn(const std::string& address, int port);

/// The port that such a socket really has.
int portOf(const FileDescriptor& listener);

/// "127.0.0.1:502", "[::1]:502".
std::string endpointText(const std::string& address, int port);

} // namespace simulator

#endif
