/// Creates and removes the server's socket.
#include "server/listening_socket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <stdexcept>

#include "protocol/socket_path.h"

namespace sim {
namespace {

constexpr int kBacklog = 128;

[[noreturn]] void Refuse(const std::string& path, const std::string& reason) {
  throw std::runtime_error(path + ": " + reason);
}

[[noreturn]] void RefuseForErrno(const std::string& path, const std::string& what) {
  Refuse(path, what + ": " + std::strerror(errno));
}

}  // namespace

// Once the delegated constructor has returned, the destructor runs even when the rest of this one
// throws, and removes whatever was created.
ListeningSocket::ListeningSocket(const std::string& path) : ListeningSocket() {
  if (!ToAddress(path))
    Refuse(path, "the path of a socket has 1 to " +
                     std::to_string(sizeof(sockaddr_un::sun_path) - 1) + " characters");
  const size_t slash = path.rfind('/');
  directory_ = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  name_ = path.substr(slash + 1);
  lock_name_ = name_ + ".lock";
  if (name_.empty()) Refuse(path, "is a directory");
  OpenDirectory();
  address_ = Address();
  Lock();
  RemoveStaleSocket();
}

ListeningSocket::~ListeningSocket() {
  if (bound_) ::unlinkat(open_directory_.Get(), name_.c_str(), 0);
  if (lock_.IsOpen()) ::unlinkat(open_directory_.Get(), lock_name_.c_str(), 0);
  if (made_directory_) ::rmdir(directory_.c_str());
}

// From here on, everything uses the descriptor, so a later change of the path does no harm.
void ListeningSocket::OpenDirectory() {
  // O_NOFOLLOW would follow a symbolic link whose name ends in a slash.
  while (directory_.size() > 1 && directory_.back() == '/') directory_.pop_back();
  made_directory_ = ::mkdir(directory_.c_str(), 0700) == 0;
  constexpr int kMode = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  open_directory_ = Descriptor(::open(directory_.c_str(), kMode));
  if (!open_directory_.IsOpen()) RefuseForErrno(directory_, "cannot open the directory");
  struct stat status {};
  ::fstat(open_directory_.Get(), &status);
  if (status.st_uid != ::geteuid()) Refuse(directory_, "the directory is another user's");
  if ((status.st_mode & 022) != 0) Refuse(directory_, "others can write to the directory");
}

// If the lock file was removed between opening and locking it, the lock is worthless and another
// file must be opened.
void ListeningSocket::Lock() {
  for (;;) {
    constexpr int kMode = O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC;
    Descriptor lock(::openat(open_directory_.Get(), lock_name_.c_str(), kMode, 0600));
    if (!lock.IsOpen()) RefuseForErrno(directory_ + "/" + lock_name_, "cannot open the lock file");
    if (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0)
      Refuse(directory_ + "/" + name_, "a server is already running");
    struct stat opened {};
    struct stat present {};
    ::fstat(lock.Get(), &opened);
    ::fstatat(open_directory_.Get(), lock_name_.c_str(), &present, AT_SYMLINK_NOFOLLOW);
    if (opened.st_ino == present.st_ino) {
      lock_ = std::move(lock);
      return;
    }
  }
}

sockaddr_un ListeningSocket::Address() const {
  const auto address =
      ToAddress("/proc/self/fd/" + std::to_string(open_directory_.Get()) + "/" + name_);
  if (!address) Refuse(directory_ + "/" + name_, "the name is too long");
  return *address;
}

void ListeningSocket::RemoveStaleSocket() {
  const std::string path = directory_ + "/" + name_;
  struct stat status;
  if (::fstatat(open_directory_.Get(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return;
  if (!S_ISSOCK(status.st_mode)) Refuse(path, "exists and is not a socket");
  if (status.st_uid != ::geteuid()) Refuse(path, "is another user's socket");
  const Descriptor probe(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const int result =
      ::connect(probe.Get(), reinterpret_cast<const sockaddr*>(&address_), sizeof address_);
  if (result == 0 || errno != ECONNREFUSED) Refuse(path, "a server is already running");
  ::unlinkat(open_directory_.Get(), name_.c_str(), 0);
}

Descriptor ListeningSocket::Listen() {
  Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  const mode_t before = ::umask(0177);
  bound_ = ::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address_), sizeof address_) == 0;
  ::umask(before);
  if (!bound_ || ::listen(socket.Get(), kBacklog) != 0)
    RefuseForErrno(directory_ + "/" + name_, "cannot listen");
  return socket;
}

}  // namespace sim
