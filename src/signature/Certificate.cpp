// Certificate parsing and distinguished-name text.

#include "signature/Certificate.h"

#include <openssl/asn1.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/pem.h>

#include <odlex/support/Utf8.h>

#include <array>
#include <ctime>
#include <string_view>

namespace odlex::signature {
namespace {

struct BioFree {
  void operator()(BIO* bio) const { BIO_free(bio); }
};

// Attribute short names as Windows' name-to-string call writes them, by OID.
struct AttributeName {
  std::string_view oid;
  std::string_view name;
};
constexpr std::array kAttributeNames{
    AttributeName{"2.5.4.3", "CN"},
    AttributeName{"2.5.4.4", "SN"},
    AttributeName{"2.5.4.5", "SERIALNUMBER"},
    AttributeName{"2.5.4.6", "C"},
    AttributeName{"2.5.4.7", "L"},
    AttributeName{"2.5.4.8", "S"},
    AttributeName{"2.5.4.9", "STREET"},
    AttributeName{"2.5.4.10", "O"},
    AttributeName{"2.5.4.11", "OU"},
    AttributeName{"2.5.4.12", "T"},
    AttributeName{"2.5.4.42", "G"},
    AttributeName{"2.5.4.43", "I"},
    AttributeName{"1.2.840.113549.1.9.1", "E"},
    AttributeName{"0.9.2342.19200300.100.1.25", "DC"},
};

std::string attributeName(const ASN1_OBJECT* type) {
  std::array<char, 128> oid{};
  const int length = OBJ_obj2txt(oid.data(), static_cast<int>(oid.size()), type, 1);
  if (length <= 0 || static_cast<std::size_t>(length) >= oid.size())
    return "?";
  const std::string_view text(oid.data(), static_cast<std::size_t>(length));
  for (const AttributeName& known : kAttributeNames) {
    if (known.oid == text)
      return std::string(known.name);
  }
  return std::string(text);
}

bool needsQuotes(std::u16string_view value) {
  if (value.empty() || value.front() == u' ' || value.back() == u' ')
    return true;
  return value.find_first_of(u",+=\";<>#\r\n") != std::u16string_view::npos;
}

std::u16string hexText(std::span<const unsigned char> bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::u16string hex;
  for (unsigned char byte : bytes) {
    hex += static_cast<char16_t>(kDigits[byte >> 4]);
    hex += static_cast<char16_t>(kDigits[byte & 15]);
  }
  return hex;
}

std::u16string valueText(const ASN1_STRING* value) {
  unsigned char* utf8 = nullptr;
  const int length = ASN1_STRING_to_UTF8(&utf8, value);
  if (length < 0) {
    // Not text: the bytes in hex.
    return u"#" +
           hexText(std::span<const unsigned char>(
               ASN1_STRING_get0_data(value), static_cast<std::size_t>(ASN1_STRING_length(value))));
  }
  std::u16string text = Utf8ToUtf16(
      std::string_view(reinterpret_cast<char*>(utf8), static_cast<std::size_t>(length)));
  OPENSSL_free(utf8);
  if (!needsQuotes(text))
    return text;
  std::u16string quoted = u"\"";
  for (char16_t c : text) {
    quoted += c;
    if (c == u'"')
      quoted += u'"';
  }
  return quoted + u"\"";
}

}  // namespace

Certificate parseCertificate(std::span<const unsigned char> bytes) {
  if (bytes.empty() || bytes.size() > static_cast<std::size_t>(INT32_MAX))
    return nullptr;
  static constexpr std::string_view kArmour = "-----BEGIN CERTIFICATE-----";
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.find(kArmour) != std::string_view::npos) {
    std::unique_ptr<BIO, BioFree> bio(
        BIO_new_mem_buf(bytes.data(), static_cast<int>(bytes.size())));
    if (!bio)
      return nullptr;
    return Certificate(PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr));
  }
  const unsigned char* next = bytes.data();
  Certificate certificate(d2i_X509(nullptr, &next, static_cast<long>(bytes.size())));
  if (certificate && next != bytes.data() + bytes.size())
    return nullptr;
  return certificate;
}

std::u16string nameToString(const X509_NAME* name) {
  std::u16string text;
  const int count = X509_NAME_entry_count(name);
  for (int i = 0; i < count; ++i) {
    const X509_NAME_ENTRY* entry = X509_NAME_get_entry(name, i);
    if (!text.empty())
      text += u"; ";
    const std::string type = attributeName(X509_NAME_ENTRY_get_object(entry));
    text.append(type.begin(), type.end());
    text += u'=';
    text += valueText(X509_NAME_ENTRY_get_data(entry));
  }
  return text;
}

std::u16string timeText(const ASN1_TIME* time) {
  std::tm parts{};
  if (time == nullptr || ASN1_TIME_to_tm(time, &parts) != 1)
    return {};
  std::array<char, 32> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return std::u16string(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length));
}

std::u16string thumbprint(const X509* certificate) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int length = 0;
  if (X509_digest(certificate, EVP_sha1(), digest.data(), &length) != 1)
    return {};
  return hexText(std::span<const unsigned char>(digest.data(), length));
}

std::vector<unsigned char> encode(const X509* certificate) {
  unsigned char* der = nullptr;
  const int length = i2d_X509(certificate, &der);
  if (length <= 0)
    return {};
  std::vector<unsigned char> bytes(der, der + length);
  OPENSSL_free(der);
  return bytes;
}

}  // namespace odlex::signature
