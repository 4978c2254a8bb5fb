#pragma once

#include <string_view>

namespace brevant::host {

/// Base of every host service. An operation that a host does not provide raises automation
/// error 438 naming the service and the operation, so a partial host fails clearly instead of
/// misbehaving.
class HostService {
public:
    virtual ~HostService() = default;

protected:
    [[noreturn]] static void unsupported(std::string_view service, std::string_view operation);
};

} // namespace brevant::host
