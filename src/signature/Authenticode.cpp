// Reading and checking the PKCS#7 signed data of an Authenticode signature.

#include "signature/Authenticode.h"

#include <openssl/err.h>
#include <openssl/objects.h>
#include <openssl/x509.h>

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>

#include "signature/Der.h"

namespace odlex::signature {
namespace {

// SpcIndirectDataContent, the content type of Authenticode signed data.
constexpr char kIndirectDataOid[] = "1.3.6.1.4.1.311.2.1.4";

std::optional<DerElement> readTagged(std::span<const unsigned char>& bytes, std::uint8_t tag) {
  std::optional<DerElement> element = readDer(bytes);
  if (element && element->tag != tag)
    return std::nullopt;
  return element;
}

bool hasType(const PKCS7* pkcs7, const char* oid) {
  std::array<char, 64> text{};
  const int length = OBJ_obj2txt(text.data(), static_cast<int>(text.size()), pkcs7->type, 1);
  return length > 0 && std::string_view(text.data()) == oid;
}

const EVP_MD* digestOf(const DerElement& oid) {
  const unsigned char* next = oid.whole.data();
  ASN1_OBJECT* object = d2i_ASN1_OBJECT(nullptr, &next, static_cast<long>(oid.whole.size()));
  if (!object)
    return nullptr;
  const EVP_MD* digest = EVP_get_digestbynid(OBJ_obj2nid(object));
  ASN1_OBJECT_free(object);
  return digest;
}

bool verify(EVP_PKEY* key, const EVP_MD* digest, std::span<const unsigned char> data,
            const ASN1_OCTET_STRING* signature) {
  std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(),
                                                                  EVP_MD_CTX_free);
  return context && EVP_DigestVerifyInit(context.get(), nullptr, digest, nullptr, key) == 1 &&
         EVP_DigestVerify(context.get(), ASN1_STRING_get0_data(signature),
                          static_cast<std::size_t>(ASN1_STRING_length(signature)), data.data(),
                          data.size()) == 1;
}

}  // namespace

std::unique_ptr<Authenticode> Authenticode::parse(std::span<const unsigned char> der) {
  if (der.empty() || der.size() > static_cast<std::size_t>(INT_MAX))
    return nullptr;
  auto result = std::make_unique<Authenticode>();
  const unsigned char* next = der.data();
  result->pkcs7_.reset(d2i_PKCS7(nullptr, &next, static_cast<long>(der.size())));
  const PKCS7* pkcs7 = result->pkcs7_.get();
  ERR_clear_error();
  if (!pkcs7 || !PKCS7_type_is_signed(pkcs7) || !pkcs7->d.sign || !pkcs7->d.sign->contents)
    return nullptr;
  const PKCS7* contents = pkcs7->d.sign->contents;
  if (!hasType(contents, kIndirectDataOid) || !contents->d.other ||
      contents->d.other->type != V_ASN1_SEQUENCE)
    return nullptr;
  const ASN1_STRING* sequence = contents->d.other->value.sequence;
  std::span<const unsigned char> bytes(ASN1_STRING_get0_data(sequence),
                                       static_cast<std::size_t>(ASN1_STRING_length(sequence)));
  // SpcIndirectDataContent ::= SEQUENCE { data, messageDigest DigestInfo }
  // DigestInfo ::= SEQUENCE { AlgorithmIdentifier, digest OCTET STRING }
  const auto indirect = readTagged(bytes, 0x30);
  if (!indirect)
    return nullptr;
  result->content_ = indirect->content;
  std::span<const unsigned char> fields = indirect->content;
  std::optional<DerElement> digestInfo;
  if (!readDer(fields) || !(digestInfo = readTagged(fields, 0x30)))
    return nullptr;
  std::span<const unsigned char> info = digestInfo->content;
  const auto algorithm = readTagged(info, 0x30);
  const auto digest = readTagged(info, 0x04);
  if (!algorithm || !digest)
    return nullptr;
  std::span<const unsigned char> algorithmFields = algorithm->content;
  const auto oid = readTagged(algorithmFields, 0x06);
  result->digestType_ = oid ? digestOf(*oid) : nullptr;
  if (!result->digestType_ ||
      digest->content.size() != static_cast<std::size_t>(EVP_MD_size(result->digestType_)))
    return nullptr;
  result->signedDigest_.assign(digest->content.begin(), digest->content.end());

  if (sk_PKCS7_SIGNER_INFO_num(PKCS7_get_signer_info(result->pkcs7_.get())) != 1)
    return nullptr;
  STACK_OF(X509)* signers = PKCS7_get0_signers(result->pkcs7_.get(), nullptr, 0);
  ERR_clear_error();
  if (!signers)
    return nullptr;
  result->signer_ = sk_X509_value(signers, 0);
  sk_X509_free(signers);
  return result->signer_ ? std::move(result) : nullptr;
}

bool Authenticode::signatureHolds() const {
  PKCS7_SIGNER_INFO* signerInfo =
      sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(pkcs7_.get()), 0);
  EVP_PKEY* key = X509_get0_pubkey(signer_);
  const EVP_MD* digest = EVP_get_digestbyobj(signerInfo->digest_alg->algorithm);
  if (!key || !digest || !signerInfo->enc_digest)
    return false;
  bool holds;
  if (sk_X509_ATTRIBUTE_num(signerInfo->auth_attr) <= 0) {
    holds = verify(key, digest, content_, signerInfo->enc_digest);
  } else {
    std::array<unsigned char, EVP_MAX_MD_SIZE> contentDigest{};
    unsigned int length = 0;
    const ASN1_TYPE* stated = PKCS7_get_signed_attribute(signerInfo, NID_pkcs9_messageDigest);
    unsigned char* attributes = nullptr;
    const int attributesLength = ASN1_item_i2d(reinterpret_cast<ASN1_VALUE*>(signerInfo->auth_attr),
                                               &attributes, ASN1_ITEM_rptr(PKCS7_ATTR_VERIFY));
    holds = stated && stated->type == V_ASN1_OCTET_STRING && attributesLength > 0 &&
            EVP_Digest(content_.data(), content_.size(), contentDigest.data(), &length, digest,
                       nullptr) == 1 &&
            static_cast<int>(length) == ASN1_STRING_length(stated->value.octet_string) &&
            std::equal(contentDigest.begin(), contentDigest.begin() + length,
                       ASN1_STRING_get0_data(stated->value.octet_string)) &&
            verify(key, digest,
                   std::span<const unsigned char>(attributes,
                                                  static_cast<std::size_t>(attributesLength)),
                   signerInfo->enc_digest);
    OPENSSL_free(attributes);
  }
  ERR_clear_error();
  return holds;
}

}  // namespace odlex::signature
