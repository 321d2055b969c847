#include "platform/listener.h"

#include "platform/firmware.h"

namespace korvane {

Listener listener;

void find_listener() {
    listener.protocol = static_cast<ListenerProtocol*>(find_interface(listener_guid));
}

[[gnu::cold]] void tell_listener(Happening happening, std::uint64_t value) {
    listener.protocol->tell(listener.protocol, happening, value);
}

}  // namespace korvane
