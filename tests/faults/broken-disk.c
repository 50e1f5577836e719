/* A disk that fails, is slow, or is watched; and a memory that runs out. Loaded into a program with LD_PRELOAD:

      TN_DISK=FILE      struct Control below, mapped: a script says in it what is to happen, while the program runs
      TN_DISK_LOG=FILE  what is done below the folder is written there, one line a call, and each message of a peer's
   answer

   Calls of the C library are counted that concern files below the folder of the control, sockets and threads; those
   from the first to the last number fail with the given error. Inside the C library (fopen) there is nothing to catch.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

enum Kind /* in io-errors.py, too */
{
   kOpen = 1,
   kWrite = 2,
   kSync = 4,
   kRename = 8,
   kMakeFolder = 16,
   kUnlink = 32,
   kTruncate = 64,
   kRead = 128,
   kConnect = 256, /* socket, connect */
   kSend = 512,
   kReceive = 1024,
   kWait = 2048, /* for a socket */
   kThread = 4096
};

struct Control
{
   char itsFolder[256];
   int64_t itsKinds; /* whose calls are counted */
   int64_t itsFirst; /* the calls that fail, from 1; 0: none */
   int64_t itsLast;
   int64_t itsError;            /* errno; 0: a write takes half of what it is given, which is no error */
   int64_t itsSyncMicroseconds; /* that each fsync takes */
   int64_t itsFlagsError;       /* what renameat2 says to all flags; 0: nothing, it knows them */
   int64_t itsFirstAllocation;  /* the allocations that fail, from 1; 0: none, and they are not counted */
   int64_t itsLastAllocation;
   _Atomic int64_t itsCalls;
   _Atomic int64_t itsAllocations;
   _Atomic int64_t itsFailures; /* of calls and allocations */
};

static struct Control theNothing;
static struct Control* theControl = &theNothing;
static int theLog = -1;

__attribute__((constructor)) static void Begin(void)
{
   const char* const aName = getenv("TN_DISK");
   const int aFile = aName == NULL ? -1 : (int)syscall(SYS_openat, AT_FDCWD, aName, O_RDWR | O_CLOEXEC, 0);
   if (aFile >= 0)
   {
      void* const aPlace = mmap(NULL, sizeof(struct Control), PROT_READ | PROT_WRITE, MAP_SHARED, aFile, 0);
      theControl = aPlace == MAP_FAILED ? &theNothing : aPlace;
      syscall(SYS_close, aFile);
   }
   const char* const aLog = getenv("TN_DISK_LOG");
   if (aLog != NULL)
   {
      theLog = (int)syscall(SYS_openat, AT_FDCWD, aLog, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
   }
}

/* The path behind a descriptor, and a name from there; "" for none. */
static void PathOf(char* thePath, int theDescriptor, const char* theName)
{
   thePath[0] = 0;
   if (theName != NULL && theName[0] == '/')
   {
      snprintf(thePath, PATH_MAX, "%s", theName);
      return;
   }
   char aLink[32];
   if (theDescriptor == AT_FDCWD)
   {
      snprintf(aLink, sizeof aLink, "/proc/self/cwd");
   }
   else
   {
      snprintf(aLink, sizeof aLink, "/proc/self/fd/%d", theDescriptor);
   }
   const ssize_t aLength = readlink(aLink, thePath, PATH_MAX / 2);
   thePath[aLength < 0 ? 0 : aLength] = 0;
   if (theName != NULL)
   {
      snprintf(thePath + strlen(thePath), PATH_MAX / 2, "/%s", theName);
   }
}

static int IsBelow(const char* thePath)
{
   return theControl->itsFolder[0] != 0 && strncmp(thePath, theControl->itsFolder, strlen(theControl->itsFolder)) == 0;
}

/* Whether the call is to fail: errno is set then, or 0 for half of what is asked for. */
static int FailsAnywhere(int theKind)
{
   if ((theControl->itsKinds & theKind) == 0)
   {
      return 0;
   }
   const int64_t aNumber = atomic_fetch_add(&theControl->itsCalls, 1) + 1;
   if (theControl->itsFirst == 0 || aNumber < theControl->itsFirst || aNumber > theControl->itsLast)
   {
      return 0;
   }
   atomic_fetch_add(&theControl->itsFailures, 1);
   errno = (int)theControl->itsError;
   return 1;
}

static int Fails(int theKind, const char* thePath)
{
   return (theControl->itsKinds & theKind) != 0 && IsBelow(thePath) && FailsAnywhere(theKind);
}

/* thread, call, the inode of the file, path, second path. A write is noted before it is done, all else afterwards: what
   is read from the notes is never better than what was done. */
static void Note(const char* theCall, const char* thePath, const char* theSecond)
{
   if (theLog < 0 || (thePath[0] != 0 && !IsBelow(thePath)))
   {
      return;
   }
   const int anError = errno;
   struct stat aState;
   memset(&aState, 0, sizeof aState);
   if (thePath[0] != 0)
   {
      stat(theSecond[0] != 0 ? theSecond : thePath, &aState);
   }
   char aLine[2 * PATH_MAX + 100];
   const int aLength = snprintf(aLine, sizeof aLine, "%ld\t%s\t%lu\t%s\t%s\n", syscall(SYS_gettid), theCall,
                                (unsigned long)aState.st_ino, thePath, theSecond);
   syscall(SYS_write, theLog, aLine, aLength);
   errno = anError;
}

/* --- files --- */

static int OpenAt(int theFolder, const char* theName, int theFlags, int theMode)
{
   char aPath[PATH_MAX];
   PathOf(aPath, theFolder, theName);
   if (Fails(kOpen, aPath))
   {
      return -1;
   }
   const int aFile = (int)syscall(SYS_openat, theFolder, theName, theFlags, theMode);
   if (aFile >= 0)
   {
      Note((theFlags & O_CREAT) != 0 ? "create" : "open", aPath, "");
   }
   return aFile;
}

#define OPEN(NAME, FOLDER_PARAMETER, FOLDER)                                                                           \
   int NAME(FOLDER_PARAMETER const char* theName, int theFlags, ...)                                                   \
   {                                                                                                                   \
      va_list aList;                                                                                                   \
      va_start(aList, theFlags);                                                                                       \
      const int aMode = (theFlags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(aList, int) : 0;                            \
      va_end(aList);                                                                                                   \
      return OpenAt(FOLDER, theName, theFlags, aMode);                                                                 \
   }
#define WITH_FOLDER int theFolder,
#define NO_FOLDER
OPEN(open, NO_FOLDER, AT_FDCWD)
OPEN(open64, NO_FOLDER, AT_FDCWD)
OPEN(openat, WITH_FOLDER, theFolder)
OPEN(openat64, WITH_FOLDER, theFolder)

/* How many bytes may be written; -1 for none. */
static ssize_t Writable(int theFile, size_t theCount)
{
   char aPath[PATH_MAX];
   PathOf(aPath, theFile, NULL);
   if (!Fails(kWrite, aPath))
   {
      Note("write", aPath, "");
      return (ssize_t)theCount;
   }
   return errno != 0 ? -1 : (ssize_t)(theCount + 1) / 2;
}

ssize_t write(int theFile, const void* theBytes, size_t theCount)
{
   const ssize_t aCount = Writable(theFile, theCount);
   return aCount < 0 ? -1 : syscall(SYS_write, theFile, theBytes, aCount);
}

ssize_t writev(int theFile, const struct iovec* theParts, int theCount)
{
   char aPath[PATH_MAX];
   PathOf(aPath, theFile, NULL);
   if (Fails(kWrite, aPath))
   {
      return errno != 0 ? -1 : syscall(SYS_writev, theFile, theParts, 1);
   }
   Note("write", aPath, "");
   return syscall(SYS_writev, theFile, theParts, theCount);
}

ssize_t pwrite64(int theFile, const void* theBytes, size_t theCount, off64_t theStart)
{
   const ssize_t aCount = Writable(theFile, theCount);
   return aCount < 0 ? -1 : syscall(SYS_pwrite64, theFile, theBytes, aCount, theStart);
}

ssize_t pwrite(int theFile, const void* theBytes, size_t theCount, off_t theStart)
{
   return pwrite64(theFile, theBytes, theCount, theStart);
}

ssize_t pread64(int theFile, void* theBytes, size_t theCount, off64_t theStart)
{
   char aPath[PATH_MAX];
   PathOf(aPath, theFile, NULL);
   if (Fails(kRead, aPath))
   {
      return errno != 0 ? -1 : syscall(SYS_pread64, theFile, theBytes, (theCount + 1) / 2, theStart);
   }
   return syscall(SYS_pread64, theFile, theBytes, theCount, theStart);
}

ssize_t pread(int theFile, void* theBytes, size_t theCount, off_t theStart)
{
   return pread64(theFile, theBytes, theCount, theStart);
}

static int Synchronise(int theFile, long theNumber)
{
   char aPath[PATH_MAX];
   PathOf(aPath, theFile, NULL);
   if (!IsBelow(aPath))
   {
      return (int)syscall(theNumber, theFile);
   }
   if (theControl->itsSyncMicroseconds > 0)
   {
      const struct timespec aTime = {theControl->itsSyncMicroseconds / 1000000,
                                     theControl->itsSyncMicroseconds % 1000000 * 1000};
      nanosleep(&aTime, NULL);
   }
   if (Fails(kSync, aPath))
   {
      return -1;
   }
   Note("begin-sync", aPath, "");
   const int aResult = (int)syscall(theNumber, theFile);
   Note(theNumber == SYS_syncfs ? "syncfs" : "sync", aPath, "");
   return aResult;
}

int fsync(int theFile)
{
   return Synchronise(theFile, SYS_fsync);
}

int fdatasync(int theFile)
{
   return Synchronise(theFile, SYS_fdatasync);
}

int syncfs(int theFile)
{
   return Synchronise(theFile, SYS_syncfs);
}

int ftruncate64(int theFile, off64_t theSize)
{
   char aPath[PATH_MAX];
   PathOf(aPath, theFile, NULL);
   return Fails(kTruncate, aPath) ? -1 : (int)syscall(SYS_ftruncate, theFile, theSize);
}

int ftruncate(int theFile, off_t theSize)
{
   return ftruncate64(theFile, theSize);
}

int renameat2(int theFolder, const char* theName, int theOtherFolder, const char* theOther, unsigned int theFlags)
{
   char aPath[PATH_MAX];
   char aSecond[PATH_MAX];
   PathOf(aPath, theFolder, theName);
   PathOf(aSecond, theOtherFolder, theOther);
   if (Fails(kRename, aPath))
   {
      return -1;
   }
   if (theFlags != 0 && theControl->itsFlagsError != 0 && IsBelow(aPath))
   {
      errno = (int)theControl->itsFlagsError;
      return -1;
   }
   const int aResult = (int)syscall(SYS_renameat2, theFolder, theName, theOtherFolder, theOther, theFlags);
   if (aResult == 0)
   {
      Note("rename", aPath, aSecond);
   }
   return aResult;
}

int renameat(int theFolder, const char* theName, int theOtherFolder, const char* theOther)
{
   return renameat2(theFolder, theName, theOtherFolder, theOther, 0);
}

int rename(const char* theName, const char* theOther)
{
   return renameat2(AT_FDCWD, theName, AT_FDCWD, theOther, 0);
}

int linkat(int theFolder, const char* theName, int theOtherFolder, const char* theOther, int theFlags)
{
   char aPath[PATH_MAX];
   char aSecond[PATH_MAX];
   PathOf(aPath, theFolder, theName);
   PathOf(aSecond, theOtherFolder, theOther);
   if (Fails(kRename, aSecond))
   {
      return -1;
   }
   const int aResult = (int)syscall(SYS_linkat, theFolder, theName, theOtherFolder, theOther, theFlags);
   if (aResult == 0)
   {
      Note("rename", aSecond, aSecond);
   }
   return aResult;
}

int mkdirat(int theFolder, const char* theName, mode_t theMode)
{
   char aPath[PATH_MAX];
   PathOf(aPath, theFolder, theName);
   if (Fails(kMakeFolder, aPath))
   {
      return -1;
   }
   const int aResult = (int)syscall(SYS_mkdirat, theFolder, theName, theMode);
   if (aResult == 0)
   {
      Note("mkdir", aPath, "");
   }
   return aResult;
}

int mkdir(const char* theName, mode_t theMode)
{
   return mkdirat(AT_FDCWD, theName, theMode);
}

int unlinkat(int theFolder, const char* theName, int theFlags)
{
   char aPath[PATH_MAX];
   PathOf(aPath, theFolder, theName);
   return Fails(kUnlink, aPath) ? -1 : (int)syscall(SYS_unlinkat, theFolder, theName, theFlags);
}

int unlink(const char* theName)
{
   return unlinkat(AT_FDCWD, theName, 0);
}

/* --- answers: a P-DATA-TF PDU (PS3.8 9.3.5) that goes out --- */

static void NoteAnswer(const void* theBytes, size_t theCount)
{
   if (theLog >= 0 && theCount > 0 && *(const unsigned char*)theBytes == 4)
   {
      Note("answer", "", "");
   }
}

ssize_t send(int theSocket, const void* theBytes, size_t theCount, int theFlags)
{
   NoteAnswer(theBytes, theCount);
   return syscall(SYS_sendto, theSocket, theBytes, theCount, theFlags, NULL, 0);
}

/* The message, or half of its first part. */
static const struct msghdr* HalfOf(const struct msghdr* theMessage, struct msghdr* theHalf, struct iovec* thePart)
{
   *theHalf = *theMessage;
   *thePart = theMessage->msg_iov[0];
   thePart->iov_len = (thePart->iov_len + 1) / 2;
   theHalf->msg_iov = thePart;
   theHalf->msg_iovlen = 1;
   return theHalf;
}

ssize_t sendmsg(int theSocket, const struct msghdr* theMessage, int theFlags)
{
   struct msghdr aHalf;
   struct iovec aPart;
   if (FailsAnywhere(kSend))
   {
      return errno != 0 ? -1 : syscall(SYS_sendmsg, theSocket, HalfOf(theMessage, &aHalf, &aPart), theFlags);
   }
   if (theMessage->msg_iovlen > 0)
   {
      NoteAnswer(theMessage->msg_iov[0].iov_base, theMessage->msg_iov[0].iov_len);
   }
   return syscall(SYS_sendmsg, theSocket, theMessage, theFlags);
}

ssize_t recvmsg(int theSocket, struct msghdr* theMessage, int theFlags)
{
   struct msghdr aHalf;
   struct iovec aPart;
   if (FailsAnywhere(kReceive))
   {
      return errno != 0 ? -1 : syscall(SYS_recvmsg, theSocket, HalfOf(theMessage, &aHalf, &aPart), theFlags);
   }
   return syscall(SYS_recvmsg, theSocket, theMessage, theFlags);
}

int socket(int theFamily, int theType, int theProtocol)
{
   return FailsAnywhere(kConnect) ? -1 : (int)syscall(SYS_socket, theFamily, theType, theProtocol);
}

int connect(int theSocket, const struct sockaddr* theAddress, socklen_t theLength)
{
   return FailsAnywhere(kConnect) ? -1 : (int)syscall(SYS_connect, theSocket, theAddress, theLength);
}

int ppoll(struct pollfd* theSockets, nfds_t theCount, const struct timespec* theTime, const sigset_t* theSignals)
{
   struct timespec aTime; /* the kernel writes into it */
   if (theTime != NULL)
   {
      aTime = *theTime;
   }
   return FailsAnywhere(kWait)
              ? -1
              : (int)syscall(SYS_ppoll, theSockets, theCount, theTime != NULL ? &aTime : NULL, theSignals, _NSIG / 8);
}

int pthread_create(pthread_t* theThread, const pthread_attr_t* theAttributes, void* (*theFunction)(void*),
                   void* theData)
{
   typedef int (*Function)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
   static Function aCreate = NULL;
   if (FailsAnywhere(kThread))
   {
      return errno;
   }
   if (aCreate == NULL)
   {
      aCreate = (Function)dlsym(RTLD_NEXT, "pthread_create");
   }
   return aCreate(theThread, theAttributes, theFunction, theData);
}

/* --- memory --- */

extern void* __libc_malloc(size_t);
extern void* __libc_calloc(size_t, size_t);
extern void* __libc_realloc(void*, size_t);
extern void* __libc_memalign(size_t, size_t);

static int IsOut(void)
{
   if (theControl->itsFirstAllocation == 0)
   {
      return 0;
   }
   const int64_t aNumber = atomic_fetch_add(&theControl->itsAllocations, 1) + 1;
   if (aNumber < theControl->itsFirstAllocation || aNumber > theControl->itsLastAllocation)
   {
      return 0;
   }
   atomic_fetch_add(&theControl->itsFailures, 1);
   errno = ENOMEM;
   return 1;
}

void* malloc(size_t theSize)
{
   return IsOut() ? NULL : __libc_malloc(theSize);
}

void* calloc(size_t theCount, size_t theSize)
{
   return IsOut() ? NULL : __libc_calloc(theCount, theSize);
}

void* realloc(void* theMemory, size_t theSize)
{
   return IsOut() ? NULL : __libc_realloc(theMemory, theSize);
}

void* aligned_alloc(size_t theAlignment, size_t theSize)
{
   return IsOut() ? NULL : __libc_memalign(theAlignment, theSize);
}
