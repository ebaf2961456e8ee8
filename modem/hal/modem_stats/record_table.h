/* Record layouts as tables. A record is one table and one struct; a version of it is one column. */
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <tuple>
#include <utility>

#include "unpack.h"

/* One field: where its value goes (the member's type is the field's), its width in bits and, for
 * each version of the record, its first bit behind the version word. */
template <typename Record, typename T, size_t versions> struct unpk_field {
    const char* name;
    T Record::*member;
    int32_t width;
    int32_t bit[versions];
};
template <typename Record, typename T, size_t versions>
unpk_field(const char*, T Record::*, int32_t, const int32_t (&)[versions])
    -> unpk_field<Record, T, versions>;

/* The record's fields in the order in which they are read. */
template <size_t columns, typename... Fields> struct unpk_table {
    const char* parser;
    uint32_t versions[columns];
    std::tuple<Fields...> fields;
};
template <size_t columns, typename... Fields>
unpk_table(const char*, const uint32_t (&)[columns], std::tuple<Fields...>)
    -> unpk_table<columns, Fields...>;

template <const auto& table, size_t column, size_t row, typename Cursor, typename Record>
[[gnu::always_inline]] inline bool unpk_read_field(Cursor& cursor, Record& record) {
    constexpr auto field = std::get<row>(table.fields);
    return cursor.UNPK_AT(field.name, field.bit[column], field.width, record.*field.member);
}

template <const auto& table, size_t column, typename Cursor, typename Record, size_t... rows>
[[gnu::always_inline]] inline bool unpk_read_column(Cursor& cursor, Record& record,
                                                    std::index_sequence<rows...>) {
    return (unpk_read_field<table, column, rows>(cursor, record) && ...);
}

/* Expands the column of the record's version. */
template <const auto& table, size_t column = 0, typename Cursor, typename Record>
[[gnu::always_inline]] inline bool unpk_read_version(Cursor& cursor, Record& record) {
    if constexpr (column == std::size(table.versions)) {
        return unpk_version_not_support(record.version, table.parser), false;
    } else {
        constexpr uint32_t version = table.versions[column];
        if (record.version == version)
            return unpk_read_column<table, column>(
                cursor, record,
                std::make_index_sequence<std::tuple_size_v<decltype(table.fields)>>());
        return unpk_read_version<table, column + 1>(cursor, record);
    }
}

/* Reads a record, its version word first. When false, a line told why and record holds what had
 * been read until then. */
template <const auto& table, typename Cursor, typename Record>
[[gnu::always_inline]] inline bool unpk_read_record(Cursor& cursor, Record& record) {
    if (!cursor.UNPK_I({"version"}, record.version))
        return false;
    cursor.BASE_WITH_BIT(8 * sizeof record.version);
    return unpk_read_version<table>(cursor, record);
}
