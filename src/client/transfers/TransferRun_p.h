#pragma once

#include "FileSink_p.h"
#include "RetryPlan_p.h"
#include "TransferClock_p.h"
#include "TransferErrors_p.h"
#include "TransferPace_p.h"
#include "TransferQueue_p.h"
#include "TransferRequest.h"

#include <QHttpMultiPart>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <memory>
#include <optional>

class QNetworkAccessManager;
class QThread;

namespace Softphone {

class UploadFile;

/// What a transfer is to do.
struct TransferTask
{
    enum class Kind { Download, Size, Upload, Post };

    Kind kind = Kind::Download;
    TransferRequest request;
    QByteArray body;                ///< of a post
    QHttpMultiPart* form = nullptr; ///< of a post instead of the body; the run takes it over
};

/// What all transfers of one owner share.
struct TransferServices
{
    QNetworkAccessManager* network;
    TransferQueue* queue;
    QThread* disk; ///< where files are written; started by the first one
};

/// One transfer from its place in the queue to its end: asks, follows redirects, feeds the file or the body,
/// tries again.
///
/// Its two signals are the last thing that an event of its own does, so that whoever hears them may delete
/// it.
class TransferRun : public QObject
{
    Q_OBJECT

public:
    struct Result
    {
        TransferFailure failure;
        int status = 0;
        qint64 done = 0;
        qint64 total = -1;
        QByteArray body;
        QString path;
        QList<QNetworkReply::RawHeaderPair> headers;
    };

    TransferRun(TransferTask task, TransferServices services);

    /// Ends the transfer without a signal; what a download has written so far is removed, or left if the
    /// request says so.
    ~TransferRun() override;

    /// It is this transfer's turn.
    void proceed();

    void cancel();

    /// The server that is asked next.
    [[nodiscard]] QByteArray const& origin() const { return m_origin; }

    [[nodiscard]] Result const& result() const { return m_result; }
    [[nodiscard]] bool hasEnded() const { return m_stage == Stage::Ended; }
    /// The field \a name of the last answer.
    [[nodiscard]] QByteArray field(QByteArray const& name) const;
    [[nodiscard]] double bytesPerSecond() const { return m_pace.bytesPerSecond(); }

Q_SIGNALS:
    void moved(); ///< the counts have changed; at most ten times a second
    void ended();

private:
    enum class Stage { Waiting, Running, Committing, Ending, Ended };
    enum class Method { Get, Head, Put, Post };

    /// What is known of the answer that is arriving.
    struct Answer
    {
        bool isJudged = false; ///< its status and fields were looked at
        bool isWhole = false;  ///< nothing more will come
        bool wasSent = false;  ///< the request, or a part of it, is on its way
        qint64 announced = -1; ///< how long its body is; -1 when only its end tells
        qint64 received = 0;
        QString tlsProblem;
    };

    // Asking.
    [[nodiscard]] std::optional<TransferFailure> problem() const;
    void takeLogin();
    void setUrl(QUrl const& url);
    void send();
    [[nodiscard]] QNetworkRequest networkRequest() const;
    void setHeaders(QNetworkRequest& request) const;
    [[nodiscard]] QNetworkReply* startRequest(QNetworkRequest const& request);
    void listen();

    // Judging the head of the answer.
    void onHead();
    void follow(QByteArray const& location);
    void changeMethod();
    void acceptBody();
    [[nodiscard]] bool continuesPart() const;
    [[nodiscard]] bool isReadable() const;
    [[nodiscard]] std::optional<qint64> lengthToCome() const;
    [[nodiscard]] std::optional<qint64> announcedLength() const;
    void startFile(qint64 kept);

    // Moving bytes.
    void pump();
    void take(QByteArray const& block);
    void takeErrorBody(QByteArray const& block);
    void onSent(qint64 sent, qint64 total);
    void onTick();

    // The file.
    void openFile();
    void onOpened(qint64 kept, QByteArray const& tag, qint64 length);
    void onDigestDiffers();
    void onFileFailed(QString const& reason);

    // Ending.
    void conclude();
    [[nodiscard]] std::optional<TransferFailure> outcome() const;
    [[nodiscard]] QNetworkReply::NetworkError networkError() const;
    [[nodiscard]] TransferErrors::Stage stage() const;
    [[nodiscard]] bool looksLikeBomb() const;
    void onLimit(TransferClock::Limit limit);
    void fail(TransferFailure const& failure);
    void startOver();
    void finish(TransferFailure const& failure);
    [[nodiscard]] bool keepsPartAfter(TransferError error) const;
    void deliver();
    void dropReply();

    [[nodiscard]] QString host() const;
    [[nodiscard]] bool isFailedStatus() const { return m_result.status >= 400; }
    [[nodiscard]] bool isDiskBusy() const;
    [[nodiscard]] bool sendsBody() const { return m_method == Method::Put || m_method == Method::Post; }

    TransferTask m_task;
    TransferServices m_services;
    Result m_result;
    Stage m_stage = Stage::Waiting;
    Method m_method = Method::Get;
    QUrl m_url;
    QByteArray m_origin;
    QByteArray m_login;           ///< of the address, as the value of "Authorization"
    bool m_isFirstServer = true;  ///< no redirect has led elsewhere, so that the server may see the login
    bool m_acceptsPacked = false; ///< the server packs its answers although it was asked not to
    int m_redirects = 0;
    RetryPlan m_plan;
    TransferClock m_clock;
    TransferPace m_pace;
    QTimer m_tick;
    QTimer m_pause;
    qint64 m_reported = -1;

    QNetworkReply* m_reply = nullptr;
    QPointer<UploadFile> m_file;
    Answer m_answer;

    FileSink* m_sink = nullptr;
    std::optional<ResumeRecord> m_record; ///< of what the part file holds
    qint64 m_kept = 0;                    ///< how much of that is asked for no more
    int m_blocksAtDisk = 0;
};

} // namespace Softphone
