#include "DAXIPC/DBUSLowLevel/Decoder/ArchiveDecoder.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <optional>

#include <boost/date_time/gregorian/gregorian.hpp>

#include "DAXIPC/DBUSLowLevel/Decoder/Implementation/ArchiveScanner.h"

namespace DAX::DAXIPC::DBUSLowLevel {

namespace {

using Form = TypeDescription::Form;
using Broken = ArchiveScanner::Broken;

const char SIGNATURE[] = "serialization::archive";
const unsigned int ARCHIVE_VERSION = 18;
const unsigned int LAST_VERSION_WITHOUT_ITEM_VERSION = 3;

// Marks a class that an archive knows by other means than its description.
const TypeDescription DATE{Form::TEXT, "date"};
const TypeDescription TIME_OF_DAY{Form::TEXT, "time of day"};

class Decoder {
public:
    Decoder(std::string_view bytes, const DecodingLimits& limits) : m_scanner(bytes), m_limits(limits) {}

    void run(const ArchiveDescription& description, DecodedArchive& result) {
        try {
            readHeader();
            for (const FieldDescription& field : description.fields) {
                result.values.emplace_back();
                readField(field, result.values.back());
            }
        } catch (const Broken& broken) {
            result.breakage = Breakage{broken.offset, m_path, broken.what()};
        }
        result.end = m_scanner.offset();
    }

private:
    // The part of the path from here on, for as long as it is read. Where reading breaks, it stays.
    void enter(const std::string& name) { m_path += (m_path.empty() || name[0] == '[' ? "" : ".") + name; }

    void readHeader() {
        if (m_scanner.text("length of the signature") != SIGNATURE) {
            throw Broken(0, std::string("no archive: it does not begin with \"22 ") + SIGNATURE + "\"");
        }
        const std::size_t begin = m_scanner.nextToken();
        m_version = m_scanner.number<unsigned short>("version of the archive");
        if (m_version > ARCHIVE_VERSION) {
            throw Broken(begin, "an archive of version " + std::to_string(m_version) + "; the newest known is " +
                                    std::to_string(ARCHIVE_VERSION));
        }
    }

    void readField(const FieldDescription& field, DecodedValue& result) {
        const std::string outside = m_path;
        enter(field.name);
        result.name = field.name;
        read(*field.type, result);
        m_path = outside;
    }

    void read(const TypeDescription& type, DecodedValue& result) {
        result.type = &type;
        result.offset = m_scanner.nextToken();
        readValue(type, result);
        result.length = m_scanner.offset() - result.offset;
    }

    void readValue(const TypeDescription& type, DecodedValue& result) {
        switch (type.form) {
        case Form::FLAG:
            result.value = m_scanner.number<bool>("flag, which is 0 or 1");
            return;
        case Form::NUMBER:
            result.value = std::int64_t(m_scanner.number<int>("number of 32 bits"));
            return;
        case Form::UNSIGNED_NUMBER:
            result.value = std::int64_t(m_scanner.number<unsigned int>("number of 32 bits without a sign"));
            return;
        case Form::KIND:
            return readKind(result);
        case Form::FRACTION:
            result.value = double(m_scanner.number<float>("fraction"));
            return;
        case Form::TEXT:
            return keep(m_scanner.text("length of a text"), result);
        case Form::BYTES:
            return readBytes(result);
        case Form::POINT_IN_TIME:
            return readPointInTime(type, result);
        case Form::LIST:
            return readList(type, result);
        case Form::OPTIONAL:
            return readOptional(type, result);
        case Form::RECORD:
            return readRecord(type, result);
        }
    }

    void readKind(DecodedValue& result) {
        const std::size_t begin = m_scanner.nextToken();
        const unsigned int kind = m_scanner.number<unsigned short>("number of 16 bits") & 0xFFU;
        if (kind > 1) {
            throw Broken(begin, "a kind of upgrade is 0 or 1, not " + std::to_string(kind));
        }
        result.value = std::int64_t(kind);
    }

    void keep(std::string_view text, DecodedValue& result) {
        const std::size_t kept = std::min(text.size(), m_limits.bytes);
        m_limits.bytes -= kept;
        result.value = std::string(text.substr(0, kept));
        result.omitted = text.size() - kept;
    }

    void readBytes(DecodedValue& result) {
        const std::size_t count = m_scanner.length("count of bytes");
        readItemVersion();
        std::string bytes;
        for (std::size_t i = 0; i < count; ++i) {
            const unsigned int byte = m_scanner.number<unsigned short>("byte") & 0xFFU;
            if (bytes.size() < m_limits.bytes) {
                bytes += static_cast<char>(byte);
            }
        }
        m_limits.bytes -= bytes.size();
        result.omitted = count - bytes.size();
        result.value = std::move(bytes);
    }

    void readItemVersion() {
        if (m_version > LAST_VERSION_WITHOUT_ITEM_VERSION) {
            m_scanner.number<unsigned int>("version of the elements");
        }
    }

    struct Class {
        bool isTracked;
        unsigned int version;
    };

    // The class tokens of an object, if they are due. Nothing when the object was in the archive before and does not
    // come again; our ends never write such archives.
    std::optional<Class> readClass(const TypeDescription& type) {
        auto known = m_classes.find(&type);
        if (known == m_classes.end()) {
            const bool isTracked = m_scanner.number<bool>("tracking level of a class");
            const auto version = m_scanner.number<unsigned int>("version of a class");
            known = m_classes.emplace(&type, Class{isTracked, version}).first;
        }
        if (known->second.isTracked) {
            if (m_scanner.number<unsigned int>("number of an object") < m_trackedObjects) {
                return std::nullopt;
            }
            ++m_trackedObjects;
        }
        return known->second;
    }

    void readList(const TypeDescription& type, DecodedValue& result) {
        if (!readClass(type)) {
            return;
        }
        const std::size_t count = m_scanner.length("count of elements");
        readItemVersion();
        const std::string outside = m_path;
        for (std::size_t i = 0; i < count; ++i) {
            m_path = outside;
            enter("[" + std::to_string(i) + "]");
            DecodedValue element;
            read(*type.element, element);
            if (m_limits.elements > 0) {
                --m_limits.elements;
                result.children.push_back(std::move(element));
            } else {
                ++result.omitted;
            }
        }
        m_path = outside;
    }

    void readOptional(const TypeDescription& type, DecodedValue& result) {
        const auto description = readClass(type);
        if (!description || !m_scanner.number<bool>("flag of an optional, which is 0 or 1")) {
            return;
        }
        if (description->version == 0) {
            readItemVersion();
        }
        result.children.emplace_back();
        read(*type.element, result.children.back());
    }

    void readRecord(const TypeDescription& type, DecodedValue& result) {
        if (!readClass(type)) {
            return;
        }
        for (const FieldDescription& field : type.fields) {
            result.children.emplace_back();
            readField(field, result.children.back());
        }
    }

    void readPointInTime(const TypeDescription& type, DecodedValue& result) {
        if (!readClass(type)) {
            return;
        }
        const auto date = readClass(DATE) ? readDate() : boost::gregorian::date(boost::gregorian::not_a_date_time);
        std::string text = date.is_special() ? boost::gregorian::to_simple_string(date)
                                             : boost::gregorian::to_iso_extended_string(date);
        if (!date.is_special()) {
            text += "T" + readTimeOfDay();
        }
        result.value = text;
    }

    boost::gregorian::date readDate() {
        const std::size_t begin = m_scanner.nextToken();
        const std::string text(m_scanner.text("length of a date"));
        if (const auto date = dateFrom(text)) {
            return *date;
        }
        throw Broken(begin, "no date; one is 8 digits, as in 20240229");
    }

    static std::optional<boost::gregorian::date> dateFrom(const std::string& text) {
        try {
            return boost::gregorian::from_undelimited_string(text);
        } catch (const boost::bad_lexical_cast&) {
            const auto special = boost::gregorian::special_value_from_string(text);
            if (special != boost::gregorian::not_special) {
                return boost::gregorian::date(special);
            }
        } catch (const std::exception&) {
        }
        return std::nullopt;
    }

    std::string readTimeOfDay() {
        const auto description = readClass(TIME_OF_DAY);
        if (!description) {
            return {};
        }
        if (m_scanner.number<bool>("flag of a time of day, which is 0 or 1")) {
            return std::string(m_scanner.text("length of a special time"));
        }
        const bool isOld = description->version == 0; // then the numbers have 32 bits
        const auto part = [&](const char* what) {
            return isOld ? std::int64_t(m_scanner.number<int>(what)) : m_scanner.number<std::int64_t>(what);
        };
        const std::int64_t hours = part("number of hours");
        const std::int64_t minutes = part("number of minutes");
        const std::int64_t seconds = part("number of seconds");
        const auto fraction = m_scanner.number<std::int64_t>("fraction of a second");
        char text[100];
        std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld", static_cast<long long>(hours),
                      static_cast<long long>(minutes), static_cast<long long>(seconds));
        if (fraction != 0) {
            char microseconds[32];
            std::snprintf(microseconds, sizeof microseconds, ".%06lld", static_cast<long long>(fraction));
            return std::string(text) + microseconds;
        }
        return text;
    }

    ArchiveScanner m_scanner;
    DecodingLimits m_limits;
    unsigned int m_version = 0;
    std::map<const TypeDescription*, Class> m_classes; // those whose tokens have come
    std::size_t m_trackedObjects = 0;
    std::string m_path;
};

} // namespace

DecodedArchive decodeArchive(const ArchiveDescription& description, std::string_view bytes,
                             const DecodingLimits& limits) {
    DecodedArchive result;
    if (description.exists) {
        Decoder(bytes, limits).run(description, result);
    }
    return result;
}

bool hasUnreadBytes(const DecodedArchive& archive, std::string_view bytes) {
    const std::string_view rest = bytes.substr(std::min(archive.end, bytes.size()));
    return !archive.breakage && !rest.empty() && rest != "\n";
}

} // namespace DAX::DAXIPC::DBUSLowLevel
