#pragma once

#include <clocale>
#include <string>

namespace base::xps {

// Gives the process a locale with a decimal comma, if the system has one, and its own back afterwards.
class DecimalCommaLocale {
  public:
    DecimalCommaLocale() : m_previous(std::setlocale(LC_ALL, nullptr)) {
        for (const char* name : {"de-DE", "German_Germany.1252", "de_DE.UTF-8"}) {
            if (std::setlocale(LC_ALL, name) != nullptr) return;
        }
    }
    DecimalCommaLocale(const DecimalCommaLocale&) = delete;
    DecimalCommaLocale& operator=(const DecimalCommaLocale&) = delete;
    ~DecimalCommaLocale() { std::setlocale(LC_ALL, m_previous.c_str()); }

    [[nodiscard]] static bool IsInForce() { return std::localeconv()->decimal_point[0] == ','; }

  private:
    std::string m_previous;
};

}  // namespace base::xps
