#include "support/test_certificates.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

namespace corvanet::test {

namespace {

struct KeyFree {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
struct CertificateFree {
  void operator()(X509* certificate) const { X509_free(certificate); }
};
using Key = std::unique_ptr<EVP_PKEY, KeyFree>;
using Certificate = std::unique_ptr<X509, CertificateFree>;

void Check(bool ok, const char* what) {
  if (!ok) throw std::runtime_error(std::string("test certificate: ") + what + " failed");
}

Key NewKey() {
  Key key(EVP_EC_gen("P-256"));
  Check(key != nullptr, "making a key");
  return key;
}

void AddExtension(X509* certificate, X509* issuer, int nid, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value.c_str());
  Check(extension != nullptr, "an extension");
  X509_add_ext(certificate, extension, -1);
  X509_EXTENSION_free(extension);
}

// A certificate for `key` named `common_name`, not yet signed; its issuer is itself until set.
Certificate NewCertificate(EVP_PKEY* key, const std::string& common_name, long serial,
                           std::chrono::hours valid_from, std::chrono::hours valid_until) {
  Certificate certificate(X509_new());
  X509_set_version(certificate.get(), 2);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()),
                  std::chrono::duration_cast<std::chrono::seconds>(valid_from).count());
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()),
                  std::chrono::duration_cast<std::chrono::seconds>(valid_until).count());
  X509_set_pubkey(certificate.get(), key);
  X509_NAME* name = X509_get_subject_name(certificate.get());
  X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char*>(common_name.c_str()), -1, -1,
                             0);
  X509_set_issuer_name(certificate.get(), name);
  return certificate;
}

void WritePem(const std::string& path, X509* certificate, EVP_PKEY* key) {
  std::FILE* file = std::fopen(path.c_str(), "w");
  Check(file != nullptr, "opening a PEM file");
  const bool written = certificate != nullptr ? PEM_write_X509(file, certificate) == 1
                                              : PEM_write_PrivateKey(file, key, nullptr, nullptr, 0,
                                                                     nullptr, nullptr) == 1;
  std::fclose(file);
  Check(written, "writing a PEM file");
}

Certificate ReadCertificate(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "r");
  Check(file != nullptr, "opening the authority's certificate");
  Certificate certificate(PEM_read_X509(file, nullptr, nullptr, nullptr));
  std::fclose(file);
  Check(certificate != nullptr, "reading the authority's certificate");
  return certificate;
}

Key ReadKey(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "r");
  Check(file != nullptr, "opening the authority's key");
  Key key(PEM_read_PrivateKey(file, nullptr, nullptr, nullptr));
  std::fclose(file);
  Check(key != nullptr, "reading the authority's key");
  return key;
}

}  // namespace

TestAuthority::TestAuthority()
    : certificate_(dir_ / "authority.pem"), key_(dir_ / "authority.key") {
  const Key key = NewKey();
  const Certificate certificate = NewCertificate(key.get(), "Corvanet Test Authority", 1,
                                                 std::chrono::hours(-1), std::chrono::hours(48));
  AddExtension(certificate.get(), certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
  AddExtension(certificate.get(), certificate.get(), NID_key_usage, "critical,keyCertSign,cRLSign");
  AddExtension(certificate.get(), certificate.get(), NID_subject_key_identifier, "hash");
  Check(X509_sign(certificate.get(), key.get(), EVP_sha256()) > 0, "signing the authority");
  WritePem(certificate_, certificate.get(), nullptr);
  WritePem(key_, nullptr, key.get());
}

TestAuthority::Issued TestAuthority::Issue(const std::vector<std::string>& names,
                                           std::chrono::hours valid_from,
                                           std::chrono::hours valid_until) const {
  const int number = ++issued_;
  const Certificate authority = ReadCertificate(certificate_);
  const Key authority_key = ReadKey(key_);
  const Key key = NewKey();
  std::string alternative_names;
  for (const std::string& name : names) {
    alternative_names += (alternative_names.empty() ? "" : ",") + name;
  }
  const Certificate certificate = NewCertificate(key.get(), "server " + std::to_string(number),
                                                 number + 1, valid_from, valid_until);
  X509_set_issuer_name(certificate.get(), X509_get_subject_name(authority.get()));
  AddExtension(certificate.get(), authority.get(), NID_basic_constraints, "CA:FALSE");
  AddExtension(certificate.get(), authority.get(), NID_key_usage, "critical,digitalSignature");
  AddExtension(certificate.get(), authority.get(), NID_ext_key_usage, "serverAuth");
  AddExtension(certificate.get(), authority.get(), NID_authority_key_identifier, "keyid");
  if (!alternative_names.empty()) {
    AddExtension(certificate.get(), authority.get(), NID_subject_alt_name, alternative_names);
  }
  Check(X509_sign(certificate.get(), authority_key.get(), EVP_sha256()) > 0, "signing");
  Issued issued{dir_ / ("server" + std::to_string(number) + ".pem"),
                dir_ / ("server" + std::to_string(number) + ".key")};
  WritePem(issued.certificate, certificate.get(), nullptr);
  WritePem(issued.key, nullptr, key.get());
  return issued;
}

}  // namespace corvanet::test
