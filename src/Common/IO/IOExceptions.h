#pragma once

#include <exception>

#include <boost/exception/exception.hpp>

namespace DAX::Common::IO::IOExceptions {

// The root of the exceptions of streams and sinks. Each carries errinfo_subject, the debug name of the object
// concerned; those of files carry errinfo_path instead.
class IOStreamsException : public virtual std::exception, public virtual boost::exception {};

class NotOpenedException : public IOStreamsException {};                     // closed before it was opened
class AlreadyOpenedException : public IOStreamsException {};                 // opened twice
class AlreadyClosedException : public IOStreamsException {};                 // a closed object never opens again
class EndOfDataMarkedException : public IOStreamsException {};               // written or marked after the end of data
class StreamDepletedException : public IOStreamsException {};                // too little data for a read of fixed size
class OutOfRangeException : public IOStreamsException {};                    // a position or range outside the stream
class NotSupportedException : public IOStreamsException {};                  // an operation that the object refuses
class ChecksumedStreamDataCorrupted : public IOStreamsException {};          // the trailer does not match the data
class ChecksumedSinkUnderlyingSinkNotRewound : public IOStreamsException {}; // a sum has to start at the beginning

} // namespace DAX::Common::IO::IOExceptions
