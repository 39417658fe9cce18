#pragma once

#include "platform/windows.h"

#include <map>

#include "devkit/printschema/element.h"
#include "devkit/printschema/names.h"
#include "devkit/prntvpt/device/device.h"
#include "devkit/prntvpt/merge/switches.h"
#include "platform/prntvpt.h"

namespace devkit::prntvpt {

// What the passes of one validation share.
struct PassState {
    const Device& device;
    const Switches& behaviour;
    EPrintTicketScope scope;
    Element ticket;  // merged, and rid of what the scope or the namespaces exclude

    // Values that options of the ticket state where the chosen option of the device refers to a parameter.
    std::map<QName, TypedValue> carried;
    bool conflict = false;

    // Whether a root entry of the device takes part: it is in scope, and no strict filter removes it.
    [[nodiscard]] bool TakesPart(const QName& name) const {
        if (printschema::ScopeOf(name) > scope) return false;
        return behaviour.privateNames != PrivateNames::Strict || printschema::IsPublicNamespace(name.uri);
    }
};

}  // namespace devkit::prntvpt
