#pragma once

#include "platform/windows.h"

#include <exception>
#include <new>
#include <string>
#include <utility>

#include "devkit/prntvpt/provider.h"

namespace devkit::prntvpt {

template <typename Body>
HRESULT Provider::Run(const char* function, const Body& body) noexcept {
    try {
        LoggedCall call = m_log.Begin(function);
        try {
            call.result = body(call);
        } catch (const std::bad_alloc&) {
            call.result = E_OUTOFMEMORY;
        } catch (const std::exception& error) {
            m_log.Note(std::string(function) + ": " + error.what());
            call.result = E_UNEXPECTED;
        }
        const HRESULT result = call.result;
        m_log.Add(std::move(call));
        return result;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace devkit::prntvpt
