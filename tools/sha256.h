// SHA-256 sums, by which bytes are known to be the same.
#pragma once

#include <array>
#include <memory>
#include <span>
#include <string>

struct evp_md_ctx_st; // OpenSSL's EVP_MD_CTX

namespace tympan::tool {

/// The sum of bytes that come in pieces.
class Sha256 {
  public:
    using Sum = std::array<unsigned char, 32>;

    /// \throws std::runtime_error when the system's library of sums doesn't have this one.
    Sha256();

    void Add(std::span<const unsigned char> bytes);
    /// Of all bytes that were added; nothing can be added behind it.
    Sum Finish();

  private:
    struct FreeContext {
        void operator()(evp_md_ctx_st* context) const;
    };

    std::unique_ptr<evp_md_ctx_st, FreeContext> context_;
};

/// In 64 lower-case digits, as `sha256sum` writes it.
std::string HexOf(const Sha256::Sum& sum);

/// The sum of a file's bytes, in digits.
/// \throws FileFailure when the file can't be read.
std::string Sha256OfFile(const std::string& path);

} // namespace tympan::tool
