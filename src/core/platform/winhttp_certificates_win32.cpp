#include <fstream>
#include <iterator>

#include "core/platform/native_path.h"
#include "core/platform/winhttp_certificates.h"
// After windows.h, whose types it uses.
#include <winhttp.h>

namespace corvanet::winhttp {

namespace {

constexpr std::string_view kBegin = "-----BEGIN CERTIFICATE-----";
constexpr std::string_view kEnd = "-----END CERTIFICATE-----";

// Adds every certificate of a PEM text to the store; how many.
int AddPemCertificates(const std::string& pem, HCERTSTORE store) {
  int added = 0;
  for (std::size_t begin = pem.find(kBegin); begin != std::string::npos;
       begin = pem.find(kBegin, begin + kBegin.size())) {
    const std::size_t end = pem.find(kEnd, begin);
    if (end == std::string::npos) break;
    const std::string_view block(pem.data() + begin, end + kEnd.size() - begin);
    DWORD size = 0;
    if (!CryptStringToBinaryA(block.data(), static_cast<DWORD>(block.size()),
                              CRYPT_STRING_BASE64HEADER, nullptr, &size, nullptr, nullptr)) {
      continue;
    }
    std::vector<BYTE> der(size);
    if (CryptStringToBinaryA(block.data(), static_cast<DWORD>(block.size()),
                             CRYPT_STRING_BASE64HEADER, der.data(), &size, nullptr, nullptr) &&
        CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, der.data(), size,
                                         CERT_STORE_ADD_REPLACE_EXISTING, nullptr)) {
      ++added;
    }
  }
  return added;
}

bool InStore(HCERTSTORE store, PCCERT_CONTEXT certificate) {
  if (store == nullptr) return false;
  PCCERT_CONTEXT found = CertFindCertificateInStore(store, X509_ASN_ENCODING, 0, CERT_FIND_EXISTING,
                                                    certificate, nullptr);
  if (found == nullptr) return false;
  CertFreeCertificateContext(found);
  return true;
}

struct Diagnosis {
  std::wstring host;
  HCERTSTORE added = nullptr;
  CertificateProblem problem = CertificateProblem::kOther;
};

void CALLBACK DiagnosisCallback(HINTERNET request, DWORD_PTR context, DWORD status, LPVOID, DWORD) {
  if (status != WINHTTP_CALLBACK_STATUS_SENDING_REQUEST) return;
  auto& diagnosis = *reinterpret_cast<Diagnosis*>(context);
  PCCERT_CONTEXT certificate = nullptr;
  DWORD size = sizeof certificate;
  if (WinHttpQueryOption(request, WINHTTP_OPTION_SERVER_CERT_CONTEXT, &certificate, &size) &&
      certificate != nullptr) {
    diagnosis.problem = CheckServerCertificate(certificate, diagnosis.host, diagnosis.added);
    CertFreeCertificateContext(certificate);
  }
}

}  // namespace

AddedAuthorities::~AddedAuthorities() {
  if (store_ != nullptr) CertCloseStore(store_, 0);
}

bool AddedAuthorities::Load(const std::vector<std::string>& files, std::string& unusable) {
  if (files == files_ && (files.empty() || store_ != nullptr)) return true;
  if (store_ != nullptr) CertCloseStore(store_, 0);
  store_ = nullptr;
  files_.clear();
  if (files.empty()) return true;
  HCERTSTORE store = CertOpenStore(CERT_STORE_PROV_MEMORY, 0, 0, 0, nullptr);
  for (const std::string& file : files) {
    std::ifstream in(NativePath(file), std::ios::binary);
    const std::string pem((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (store == nullptr || !in || AddPemCertificates(pem, store) == 0) {
      if (store != nullptr) CertCloseStore(store, 0);
      unusable = file;
      return false;
    }
  }
  store_ = store;
  files_ = files;
  return true;
}

CertificateProblem CheckServerCertificate(PCCERT_CONTEXT certificate, const std::wstring& host,
                                          HCERTSTORE added) {
  CERT_CHAIN_PARA chain_para{};
  chain_para.cbSize = sizeof chain_para;
  PCCERT_CHAIN_CONTEXT chain = nullptr;
  // The added authorities serve as further certificates to build the chain from; whether its root
  // is one of them is asked below, as the system trusts only its own roots.
  if (!CertGetCertificateChain(nullptr, certificate, nullptr, added, &chain_para, 0, nullptr,
                               &chain)) {
    return CertificateProblem::kOther;
  }
  const CERT_SIMPLE_CHAIN& simple = *chain->rgpChain[0];
  const bool added_root = InStore(added, simple.rgpElement[simple.cElement - 1]->pCertContext) &&
                          (chain->TrustStatus.dwErrorStatus & ~CERT_TRUST_IS_UNTRUSTED_ROOT &
                           ~CERT_TRUST_IS_NOT_TIME_VALID) == CERT_TRUST_NO_ERROR;
  SSL_EXTRA_CERT_CHAIN_POLICY_PARA ssl{};
  ssl.cbSize = sizeof ssl;
  ssl.dwAuthType = AUTHTYPE_SERVER;
  ssl.fdwChecks = added_root ? SECURITY_FLAG_IGNORE_UNKNOWN_CA : 0;
  ssl.pwszServerName = const_cast<wchar_t*>(host.c_str());
  CERT_CHAIN_POLICY_PARA policy_para{};
  policy_para.cbSize = sizeof policy_para;
  policy_para.pvExtraPolicyPara = &ssl;
  CERT_CHAIN_POLICY_STATUS status{};
  status.cbSize = sizeof status;
  const BOOL checked =
      CertVerifyCertificateChainPolicy(CERT_CHAIN_POLICY_SSL, chain, &policy_para, &status);
  CertFreeCertificateChain(chain);
  if (!checked) return CertificateProblem::kOther;
  switch (static_cast<HRESULT>(status.dwError)) {
    case S_OK:
      return CertificateProblem::kNone;
    case CERT_E_UNTRUSTEDROOT:
    case CERT_E_CHAINING:
    case TRUST_E_CERT_SIGNATURE:
      return CertificateProblem::kUnknownAuthority;
    case CERT_E_CN_NO_MATCH:
      return CertificateProblem::kWrongName;
    case CERT_E_EXPIRED:
      return CertificateProblem::kExpired;
    default:
      return CertificateProblem::kOther;
  }
}

CertificateProblem DiagnoseServer(const std::wstring& host, WORD port, HCERTSTORE added) {
  Diagnosis diagnosis{host, added};
  HINTERNET session = WinHttpOpen(L"Corvanet/5.1", WINHTTP_ACCESS_TYPE_NO_PROXY,
                                  WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0);
  HINTERNET connection =
      session != nullptr ? WinHttpConnect(session, host.c_str(), port, 0) : nullptr;
  HINTERNET request =
      connection != nullptr
          ? WinHttpOpenRequest(connection, L"HEAD", L"/", nullptr, WINHTTP_NO_REFERER,
                               WINHTTP_DEFAULT_ACCEPT_TYPES, WINHTTP_FLAG_SECURE)
          : nullptr;
  if (request != nullptr) {
    // Every check off here, so that the handshake completes and the certificate can be read.
    DWORD ignore = SECURITY_FLAG_IGNORE_UNKNOWN_CA | SECURITY_FLAG_IGNORE_CERT_CN_INVALID |
                   SECURITY_FLAG_IGNORE_CERT_DATE_INVALID | SECURITY_FLAG_IGNORE_CERT_WRONG_USAGE;
    WinHttpSetOption(request, WINHTTP_OPTION_SECURITY_FLAGS, &ignore, sizeof ignore);
    WinHttpSetTimeouts(request, 10000, 10000, 10000, 10000);
    WinHttpSetStatusCallback(request, &DiagnosisCallback, WINHTTP_CALLBACK_FLAG_SEND_REQUEST, 0);
    auto context = reinterpret_cast<DWORD_PTR>(&diagnosis);
    WinHttpSetOption(request, WINHTTP_OPTION_CONTEXT_VALUE, &context, sizeof context);
    WinHttpSendRequest(request, WINHTTP_NO_ADDITIONAL_HEADERS, 0, WINHTTP_NO_REQUEST_DATA, 0, 0, 0);
    WinHttpCloseHandle(request);
  }
  if (connection != nullptr) WinHttpCloseHandle(connection);
  if (session != nullptr) WinHttpCloseHandle(session);
  return diagnosis.problem;
}

}  // namespace corvanet::winhttp
