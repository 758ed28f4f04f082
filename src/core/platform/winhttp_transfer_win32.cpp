#include "core/platform/winhttp_transfer.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

#include "core/platform/fetched_body.h"
#include "core/platform/windows_text.h"

namespace corvanet::winhttp {

namespace {

constexpr long kConnectTimeoutSeconds = 10;
constexpr DWORD kReadChunk = 64 * 1024;

using Clock = std::chrono::steady_clock;

struct RequestHandle {
  HINTERNET handle = nullptr;
  ~RequestHandle() {
    if (handle != nullptr) WinHttpCloseHandle(handle);
  }
};

FetchStatus StatusForError(DWORD code, bool answered) {
  switch (code) {
    case ERROR_WINHTTP_CANNOT_CONNECT:
    case ERROR_WINHTTP_NAME_NOT_RESOLVED:
      return FetchStatus::kCouldNotConnect;
    case ERROR_WINHTTP_TIMEOUT:
      return FetchStatus::kTimedOut;
    case ERROR_WINHTTP_CONNECTION_ERROR:
    case ERROR_WINHTTP_INVALID_SERVER_RESPONSE:
      // Cut in the middle of a body the server had begun to send, or gone before answering.
      return answered ? FetchStatus::kTruncated : FetchStatus::kDropped;
    default:
      return FetchStatus::kFailed;
  }
}

FetchResult Failed(DWORD code, bool answered, FetchResult result) {
  result.status = StatusForError(code, answered);
  result.detail = windows::ErrorText(code);
  return result;
}

// A number header of the answer; -1 when it is absent.
long long NumberHeader(HINTERNET request, DWORD header) {
  std::wstring text(32, L'\0');
  DWORD size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
  if (!WinHttpQueryHeaders(request, header, WINHTTP_HEADER_NAME_BY_INDEX, text.data(), &size,
                           WINHTTP_NO_HEADER_INDEX)) {
    return -1;
  }
  text.resize(size / sizeof(wchar_t));
  if (text.empty() || text.find_first_not_of(L"0123456789") != std::wstring::npos) return -1;
  return std::stoll(text);
}

// A text header of the answer; "" when it is absent.
std::string TextHeader(HINTERNET request, DWORD header) {
  DWORD size = 0;
  WinHttpQueryHeaders(request, header, WINHTTP_HEADER_NAME_BY_INDEX, WINHTTP_NO_OUTPUT_BUFFER,
                      &size, WINHTTP_NO_HEADER_INDEX);
  if (size == 0) return {};
  std::wstring text(size / sizeof(wchar_t) + 1, L'\0');
  if (!WinHttpQueryHeaders(request, header, WINHTTP_HEADER_NAME_BY_INDEX, text.data(), &size,
                           WINHTTP_NO_HEADER_INDEX)) {
    return {};
  }
  text.resize(size / sizeof(wchar_t));
  return windows::Utf8(text);
}

FetchResult TooLarge(std::uint64_t limit, FetchResult result) {
  result.status = FetchStatus::kTooLarge;
  result.detail = BodyLimitText(limit);
  return result;
}

// The errors with which WinHTTP refuses a server's certificate (Wine gives the channel error for
// all of them).
bool IsCertificateError(DWORD code) {
  switch (code) {
    case ERROR_WINHTTP_SECURE_FAILURE:
    case ERROR_WINHTTP_SECURE_CHANNEL_ERROR:
    case ERROR_WINHTTP_SECURE_INVALID_CA:
    case ERROR_WINHTTP_SECURE_CERT_CN_INVALID:
    case ERROR_WINHTTP_SECURE_CERT_DATE_INVALID:
    case ERROR_WINHTTP_SECURE_INVALID_CERT:
    case ERROR_WINHTTP_SECURE_CERT_WRONG_USAGE:
      return true;
    default:
      return false;
  }
}

// What the check before sending needs, and what it found.
struct CertificateCheck {
  std::wstring host;
  HCERTSTORE added = nullptr;
  CertificateProblem problem = CertificateProblem::kNone;
};

// Called when the connection stands and the request is about to go out: a certificate that does
// not pass ends the request here, with nothing of it sent.
void CALLBACK CheckBeforeSending(HINTERNET request, DWORD_PTR context, DWORD status, LPVOID,
                                 DWORD) {
  if (status != WINHTTP_CALLBACK_STATUS_SENDING_REQUEST) return;
  auto& check = *reinterpret_cast<CertificateCheck*>(context);
  PCCERT_CONTEXT certificate = nullptr;
  DWORD size = sizeof certificate;
  if (!WinHttpQueryOption(request, WINHTTP_OPTION_SERVER_CERT_CONTEXT, &certificate, &size) ||
      certificate == nullptr) {
    check.problem = CertificateProblem::kOther;
  } else {
    check.problem = CheckServerCertificate(certificate, check.host, check.added);
    CertFreeCertificateContext(certificate);
  }
  if (check.problem != CertificateProblem::kNone) WinHttpCloseHandle(request);
}

// The time left of the request's whole allowance, in milliseconds, at least one.
int MillisecondsLeft(Clock::time_point deadline) {
  const auto left =
      std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 1, INT32_MAX));
}

}  // namespace

void Connection::Close() {
  if (connection_ != nullptr) WinHttpCloseHandle(connection_);
  if (session_ != nullptr) WinHttpCloseHandle(session_);
  connection_ = session_ = nullptr;
  server_key_.clear();
}

FetchResult Connection::Fetch(const FetchRequest& request, AtomicFileWriter& body) {
  FetchResult result;
  const std::wstring url = windows::Wide(request.url);
  URL_COMPONENTS parts{};
  parts.dwStructSize = sizeof parts;
  parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = 1;
  if (!WinHttpCrackUrl(url.c_str(), static_cast<DWORD>(url.size()), 0, &parts)) {
    result.detail = "not an address: " + request.url;
    return result;
  }
  const bool secure = parts.nScheme == INTERNET_SCHEME_HTTPS;
  const std::wstring host(parts.lpszHostName, parts.dwHostNameLength);
  std::wstring path(parts.lpszUrlPath, parts.dwUrlPathLength);
  path.append(parts.lpszExtraInfo, parts.dwExtraInfoLength);
  if (path.empty()) path = L"/";

  HCERTSTORE added = nullptr;
  if (secure) {
    std::string unusable;
    if (!authorities_.Load(request.extra_authorities, unusable)) {
      result.status = FetchStatus::kUntrustedCertificate;
      result.certificate = CertificateProblem::kAuthorityFileUnusable;
      result.detail = unusable;
      return result;
    }
    added = authorities_.store();
  }

  const std::wstring key =
      (secure ? L"https://" : L"http://") + host + L":" + std::to_wstring(parts.nPort);
  if (key != server_key_) {
    Close();
    session_ = WinHttpOpen(L"Corvanet/5.1", WINHTTP_ACCESS_TYPE_NO_PROXY, WINHTTP_NO_PROXY_NAME,
                           WINHTTP_NO_PROXY_BYPASS, 0);
    if (session_ != nullptr) connection_ = WinHttpConnect(session_, host.c_str(), parts.nPort, 0);
    if (connection_ == nullptr) {
      const DWORD code = GetLastError();
      Close();
      return Failed(code, false, result);
    }
    server_key_ = key;
  }

  const auto deadline = Clock::now() + std::chrono::seconds(request.timeout_seconds);
  RequestHandle call;
  call.handle = WinHttpOpenRequest(
      connection_, L"GET", path.c_str(), nullptr, WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
      WINHTTP_FLAG_ESCAPE_DISABLE | (secure ? WINHTTP_FLAG_SECURE : 0));
  if (call.handle == nullptr) return Failed(GetLastError(), false, result);
  // An answer that points elsewhere fails with its status, so the password never goes where the
  // address did not name.
  DWORD never = WINHTTP_OPTION_REDIRECT_POLICY_NEVER;
  WinHttpSetOption(call.handle, WINHTTP_OPTION_REDIRECT_POLICY, &never, sizeof never);
  // The added authorities are not the system's: WinHTTP is told to let an unknown root pass (it
  // still checks the name and the dates), and the chain is checked here before the request goes
  // out: its root must be one of them, or one the system trusts.
  CertificateCheck check{host, added};
  if (added != nullptr) {
    DWORD unknown_root = SECURITY_FLAG_IGNORE_UNKNOWN_CA;
    WinHttpSetOption(call.handle, WINHTTP_OPTION_SECURITY_FLAGS, &unknown_root,
                     sizeof unknown_root);
    WinHttpSetStatusCallback(call.handle, &CheckBeforeSending, WINHTTP_CALLBACK_FLAG_SEND_REQUEST,
                             0);
    auto context = reinterpret_cast<DWORD_PTR>(&check);
    WinHttpSetOption(call.handle, WINHTTP_OPTION_CONTEXT_VALUE, &context, sizeof context);
  }
  // A service that cannot be reached is known in seconds; only an answer may take the whole time.
  const int connect_ms =
      static_cast<int>(std::min(request.timeout_seconds, kConnectTimeoutSeconds) * 1000);
  const int whole_ms = MillisecondsLeft(deadline);
  WinHttpSetTimeouts(call.handle, connect_ms, connect_ms, whole_ms, whole_ms);
  // Sent with the first request rather than after a 401: the service expects them at once.
  WinHttpSetCredentials(call.handle, WINHTTP_AUTH_TARGET_SERVER, WINHTTP_AUTH_SCHEME_BASIC,
                        windows::Wide(request.user).c_str(),
                        windows::Wide(request.password).c_str(), nullptr);
  const bool sent = WinHttpSendRequest(call.handle, WINHTTP_NO_ADDITIONAL_HEADERS, 0,
                                       WINHTTP_NO_REQUEST_DATA, 0, 0, 0) != FALSE;
  const DWORD send_error = sent ? ERROR_SUCCESS : GetLastError();
  if (check.problem != CertificateProblem::kNone) {
    call.handle = nullptr;  // closed by the check
    Close();
    result.status = FetchStatus::kUntrustedCertificate;
    result.certificate = check.problem;
    return result;
  }
  if (!sent || !WinHttpReceiveResponse(call.handle, nullptr)) {
    const DWORD code = sent ? GetLastError() : send_error;
    Close();  // the connection is in no state to carry another request
    if (secure && IsCertificateError(code)) {
      const CertificateProblem problem = DiagnoseServer(host, parts.nPort, added);
      if (problem != CertificateProblem::kNone) {
        result.status = FetchStatus::kUntrustedCertificate;
        result.certificate = problem;
        return result;
      }
    }
    return Failed(code, false, result);
  }

  result.http_status =
      static_cast<long>(std::max(0LL, NumberHeader(call.handle, WINHTTP_QUERY_STATUS_CODE)));
  const long long retry_after = NumberHeader(call.handle, WINHTTP_QUERY_RETRY_AFTER);
  if (retry_after > 0) result.retry_after_seconds = static_cast<long>(retry_after);
  const long long announced = NumberHeader(call.handle, WINHTTP_QUERY_CONTENT_LENGTH);
  if (result.http_status >= 300 && result.http_status <= 399) {
    result.redirected_to = TextHeader(call.handle, WINHTTP_QUERY_LOCATION);
  }
  const std::uint64_t limit = request.max_body_bytes;
  if (limit != 0 && announced > 0 && static_cast<std::uint64_t>(announced) > limit) {
    Close();
    return TooLarge(limit, result);
  }

  std::vector<char> chunk(kReadChunk);
  for (;;) {
    if (Clock::now() >= deadline) {
      Close();
      result.status = FetchStatus::kTimedOut;
      result.detail =
          "the whole answer took longer than " + std::to_string(request.timeout_seconds) + " s";
      return result;
    }
    // A body that stops coming fails long before the time-out of the whole request.
    const int left = std::min(MillisecondsLeft(deadline),
                              static_cast<int>(std::max(1L, request.stall_seconds) * 1000));
    WinHttpSetOption(call.handle, WINHTTP_OPTION_RECEIVE_TIMEOUT, const_cast<int*>(&left),
                     sizeof left);
    DWORD got = 0;
    if (!WinHttpReadData(call.handle, chunk.data(), kReadChunk, &got)) {
      const DWORD code = GetLastError();
      Close();
      return Failed(code, true, result);
    }
    if (got == 0) break;
    result.bytes += got;
    if (limit != 0 && result.bytes > limit) {
      Close();
      return TooLarge(limit, result);
    }
    body.Write(std::string_view(chunk.data(), got));
    if (!body.error().empty()) {
      // A failed write (a full disk) ends the transfer: the rest of the body has nowhere to go.
      Close();
      result.status = FetchStatus::kLocalWriteFailed;
      return result;
    }
  }
  if (announced >= 0 && result.bytes < static_cast<unsigned long long>(announced)) {
    Close();
    result.status = FetchStatus::kTruncated;
    result.detail = "the answer ended after " + std::to_string(result.bytes) + " of " +
                    std::to_string(announced) + " bytes";
    return result;
  }
  result.status = result.http_status >= 200 && result.http_status <= 299 ? FetchStatus::kOk
                                                                         : FetchStatus::kHttpError;
  return result;
}

}  // namespace corvanet::winhttp
